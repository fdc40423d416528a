// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/utsname.h>

#include <iomanip>
#include <sstream>

#include "Support/MachineSupport.h"

using MachineSupport::beMachine;

namespace {

std::string hexadecimal(const SHA1Digest& digest) {
    std::ostringstream text;
    for (const unsigned byte : digest)
        text << std::hex << std::setw(2) << std::setfill('0') << byte;
    return text.str();
}

void write(const char* path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

}  // namespace

TEST(SHA1, GivesThePublishedDigests) {
    EXPECT_EQ(hexadecimal(CC_SHA1("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hexadecimal(CC_SHA1("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
              "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
    EXPECT_EQ(hexadecimal(CC_SHA1("")), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST(MachineIdentity, IsTheTextWithoutWhiteSpaceAround) {
    beMachine(" 3d12 19c7\n", "\tAcme Desktop 3\r\n");
    EXPECT_EQ(platformSerialNumber(), "3d12 19c7");
    EXPECT_EQ(hardwareModel(), "Acme Desktop 3");
}

TEST(MachineIdentity, EndsAtAZeroByte) {
    beMachine(std::string("12\0 34", 6), std::string("Board Model B\0", 14));
    EXPECT_EQ(platformSerialNumber(), "12");
    EXPECT_EQ(hardwareModel(), "Board Model B");
}

TEST(MachineIdentity, ComesFromTheFirstFileThatHoldsText) {
    write("empty", "");
    write("blank", " \n");
    write("first", "one");
    write("second", "two");
    setMachineIdentitySources({{"missing", "empty", "blank", "first", "second"},
                               {"blank", "missing", "second", "first"},
                               false});
    EXPECT_EQ(platformSerialNumber(), "one");
    EXPECT_EQ(hardwareModel(), "two");
}

TEST(MachineIdentity, IsEmptyWhereNothingTellsIt) {
    beMachine(std::nullopt, std::nullopt);
    EXPECT_EQ(platformSerialNumber(), std::nullopt);
    EXPECT_EQ(hardwareModel(), std::nullopt);
    beMachine("\n", " ");
    EXPECT_EQ(platformSerialNumber(), std::nullopt);
    EXPECT_EQ(hardwareModel(), std::nullopt);
}

TEST(MachineIdentity, AModelThatDoesNotFitIsNone) {
    beMachine("1", std::string(127, 'm') + "\n");
    EXPECT_EQ(hardwareModel(), std::string(127, 'm'));
    beMachine("1", std::string(128, 'm'));
    EXPECT_EQ(hardwareModel(), std::nullopt);
    write("long", std::string(128, 'm'));
    setMachineIdentitySources({{}, {"long"}, true});
    EXPECT_EQ(hardwareModel(), std::nullopt) << "the kernel's name does not stand in for it";
}

TEST(MachineIdentity, AModelIsASCII) {
    beMachine("\xC3\xA9", "Bo\xC3\xAEte");
    EXPECT_EQ(hardwareModel(), "Bo??te");
    EXPECT_EQ(platformSerialNumber(), "\xC3\xA9");
}

TEST(MachineIdentity, TheKernelTellsTheModelLast) {
    utsname names{};
    ASSERT_EQ(uname(&names), 0);
    setMachineIdentitySources({{}, {"missing"}, true});
    EXPECT_EQ(hardwareModel(), std::string(names.machine));
}

TEST(MachineIdentity, IsAskedForAtEachCall) {
    beMachine("one", "first");
    EXPECT_EQ(platformSerialNumber(), "one");
    write("serial-number", "two");
    write("model", "second");
    EXPECT_EQ(platformSerialNumber(), "two");
    EXPECT_EQ(hardwareModel(), "second");
}

TEST(MachineIdentity, IsReadFromTheSystemsPlacesUntilTheSourcesAreReplaced) {
    const MachineIdentitySources system = setMachineIdentitySources({});
    EXPECT_EQ(system.serialNumberFiles,
              (std::vector<std::string>{"/etc/machine-id", "/var/lib/dbus/machine-id"}));
    EXPECT_EQ(system.modelFiles, (std::vector<std::string>{"/sys/class/dmi/id/product_name",
                                                           "/sys/firmware/devicetree/base/model"}));
    EXPECT_TRUE(system.usesKernelMachineName);
}
