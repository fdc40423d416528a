// SPDX-License-Identifier: MIT
#include "Platform/Files/OwnWrites.h"

namespace {

thread_local const OwnWrites* innermost = nullptr;

}  // namespace

OwnWrites::OwnWrites(const NSFilePresenter* performer, const std::string& path)
    : performer_(performer), path_(path), outer_(innermost) {
    innermost = this;
}

OwnWrites::~OwnWrites() {
    innermost = outer_;
}

const NSFilePresenter* OwnWrites::performerAt(const std::string& path) {
    for (const OwnWrites* writes = innermost; writes != nullptr; writes = writes->outer_)
        if (writes->path_ == path) return writes->performer_;
    return nullptr;
}
