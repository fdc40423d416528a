// SPDX-License-Identifier: MIT
// Runs each test of the C interface in a process and a folder of its own.
#define _XOPEN_SOURCE 700

#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "testing.h"

static int remove_entry(const char* path, const struct stat* status, int kind, struct FTW* place) {
    (void)status;
    (void)kind;
    (void)place;
    return remove(path);
}

static void run_in_folder(const test* each, const char* folder) {
    char site[64];
    snprintf(site, sizeof site, "%s/site", folder);
    alarm(120);
    if (setenv("HOME", folder, 1) != 0 || setenv("XDG_CONFIG_HOME", folder, 1) != 0 ||
        setenv("XDG_CONFIG_DIRS", site, 1) != 0 || chdir(folder) != 0)
        exit(EXIT_FAILURE);
    each->body();
    exit(EXIT_SUCCESS);
}

static bool passes(const test* each) {
    char folder[] = "/tmp/qrvsettings-test-XXXXXX";
    int status = 0;
    if (mkdtemp(folder) == NULL) return false;
    const pid_t child = fork();
    if (child == 0) run_in_folder(each, folder);
    const bool has_passed = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
                            WEXITSTATUS(status) == EXIT_SUCCESS;
    nftw(folder, remove_entry, 8, FTW_DEPTH | FTW_PHYS);
    return has_passed;
}

int main(void) {
    const test* const suites[] = {value_tests, wrong_value_tests, setting_tests, store_tests,
                                  main_queue_tests};
    int count = 0;
    int failures = 0;
    for (size_t suite = 0; suite < sizeof suites / sizeof suites[0]; ++suite) {
        for (const test* each = suites[suite]; each->name != NULL; ++each) {
            const bool has_passed = passes(each);
            printf("%s %s\n", has_passed ? "passed" : "FAILED", each->name);
            fflush(stdout);
            ++count;
            if (!has_passed) ++failures;
        }
    }
    printf("%d tests, %d failed\n", count, failures);
    return failures == 0 && count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
