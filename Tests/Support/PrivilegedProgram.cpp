// SPDX-License-Identifier: MIT
// A program that prints the user's library folder, the time pattern of an unknown locale, the
// site's folders and the user's state folder, a line each. With an argument it prints nothing
// unless its file gives it privileges.

#include <sys/auxv.h>
#include <unistd.h>

#include <iostream>

#include "Platform/Files/Files.h"
#include "Platform/Files/UserFolders.h"
#include "Platform/Machine/UserLocale.h"

int main(int argc, char**) {
    if (argc > 1 && getauxval(AT_SECURE) == 0) return 0;
    std::cout << QRVPlatform::userLibraryFolder() << '\n'
              << QRVPlatform::shortTimePattern("xx_YY") << std::endl;
    for (const std::string& folder : QRVPlatform::UserFolders::siteFolders())
        std::cout << folder << std::endl;
    std::cout << QRVPlatform::userStateFolder() << std::endl;
    // A normal exit would search for leaks in a sanitizer's build, which needs a process that may
    // trace itself.
    _exit(0);
}
