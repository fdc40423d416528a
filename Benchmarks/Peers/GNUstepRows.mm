// SPDX-License-Identifier: MIT
// GNUstep reads and writes the same files as the store.

#import <Foundation/Foundation.h>
#include <benchmark/benchmark.h>

#include <functional>
#include <string>

#include "Measures/StoreRows.h"
#include "Workload/FileContents.h"

namespace {

id parse(const std::string& bytes) {
    NSData* data = [NSData dataWithBytesNoCopy:const_cast<char*>(bytes.data())
                                        length:bytes.size()
                                  freeWhenDone:NO];
    return [NSPropertyListSerialization propertyListWithData:data
                                                     options:NSPropertyListImmutable
                                                      format:nullptr
                                                       error:nullptr];
}

void readPropertyList(benchmark::State& state, const std::string& bytes) {
    for ([[maybe_unused]] const auto unused : state) {
        NSAutoreleasePool* pool = [NSAutoreleasePool new];
        if (parse(bytes) == nil) state.SkipWithError("not read");
        [pool release];
    }
}

void writePropertyList(benchmark::State& state, id tree) {
    for ([[maybe_unused]] const auto unused : state) {
        NSAutoreleasePool* pool = [NSAutoreleasePool new];
        NSData* data = [NSPropertyListSerialization dataWithPropertyList:tree
                                                                  format:NSPropertyListXMLFormat_v1_0
                                                                 options:0
                                                                   error:nullptr];
        benchmark::DoNotOptimize([data length]);
        [pool release];
    }
}

}  // namespace

int main(int argc, char** argv) {
    const Measures::RowArguments arguments = Measures::takeRowArguments(argc, argv);
    [NSAutoreleasePool new];
    const std::string xml = Workload::contentsOf(arguments.folder / "files" / "XMLReading");
    const std::string binary = Workload::contentsOf(arguments.folder / "files" / "BinaryReading");
    const std::string size = "/" + std::to_string(arguments.size);
    id tree = [parse(xml) retain];
    benchmark::RegisterBenchmark(("XMLWriting" + size).c_str(), writePropertyList, tree);
    benchmark::RegisterBenchmark(("XMLReading" + size).c_str(), readPropertyList, std::cref(xml));
    benchmark::RegisterBenchmark(("BinaryReading" + size).c_str(), readPropertyList,
                                 std::cref(binary));
    return Measures::runRows(argc, argv);
}
