// SPDX-License-Identifier: MIT
// Serial number, model and SHA-1.

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include <iomanip>
#include <sstream>

#include "Support/MachineSupport.h"

using namespace QRVPlatform;

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
    EXPECT_EQ(hexadecimal(CC_SHA1(std::string(1'000'000, 'a'))),
              "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST(SHA1, DigestsTextsThatEndAnywhereInABlock) {
    const struct {
        std::size_t length;
        const char* digest;
    } cases[] = {{55, "7b271259bf2d2d3311f75d398745f5309ff76e09"},
                 {56, "cc30d5bc02bd26f3da6c5801880078dad9a63032"},
                 {63, "0807f7f930492f9e95070290aeac189e3721bf07"},
                 {64, "ce2798652a5cbba06c6f736ddeca9724e479e5b7"},
                 {65, "b0931a65ae5cf3e027199de5f7c56eb0f073c552"},
                 {119, "c69516277e59324c6533caed0d3f7974cbc86061"},
                 {120, "b265d110f022092352c9471f056c857b31ad79d8"},
                 {128, "4e62cf8bbce5071fabccabebdee5ede47a596d2d"}};
    for (const auto& [length, digest] : cases)
        EXPECT_EQ(hexadecimal(CC_SHA1(std::string(length, 'q'))), digest) << length;
}

TEST(SHA1, CountsEveryByteOfTheText) {
    EXPECT_EQ(hexadecimal(CC_SHA1(std::string("\xff\0\x80", 3))),
              "5b101b10a702a5f4c07341f584b73626276251ac");
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
