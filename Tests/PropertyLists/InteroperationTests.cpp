// SPDX-License-Identifier: MIT
// Files exchanged with the property-list module of Python.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

#include "PropertyLists/PropertyListTesting.h"

namespace {

// Files are in the working folder, which each test has to itself.
void writeFile(const std::string& name, const std::string& bytes) {
    std::ofstream file(name, std::ios::binary);
    file << bytes;
    ASSERT_TRUE(file.flush()) << name;
}

std::string readFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

testing::AssertionResult runs(const std::string& command) {
    const int status = std::system(command.c_str());
    if (status == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure() << command << " ended with status " << status;
}

void runPython(const std::string& script) {
    writeFile("script.py", "import plistlib, datetime, math\n" + script);
    ASSERT_TRUE(runs("python3 script.py"));
}

void convert(const std::string& from, const std::string& to, const std::string& format) {
    ASSERT_TRUE(runs("plistutil -i " + from + " -o " + to + " -f " + format));
}

/// Values that every reader and writer of property lists supports.
PropertyListValue commonTree() {
    return NSDictionary{
        {"true", true},
        {"false", false},
        {"zero", 0},
        {"byte", 255},
        {"negative", -1},
        {"lowest", std::numeric_limits<std::int64_t>::min()},
        {"highest signed", std::numeric_limits<std::int64_t>::max()},
        {"highest", std::numeric_limits<std::uint64_t>::max()},
        {"one", 1.0},
        {"tenth", 0.1},
        {"negative real", -1234.5678},
        {"empty", ""},
        {"blank", " \t\n "},
        {"text", "a & <b> \"c\" 'd' \u00e9\u20ac\U0001F600\nline"},
        {"\u00e9 & key", "x"},
        {"data", NSData(std::string("\0\1\2\xFF some bytes", 15))},
        {"long data", NSData(std::string(1000, '\xA5'))},
        {"date", NSDate(700000000)},
        {"leap day", NSDate(730857600)},
        {"array", NSArray{1, "two", 3.5, NSArray{}, NSDictionary{},
                          NSArray::arrayWithObject(NSArray{true})}},
        {"dictionary", NSDictionary{{"a", NSDictionary{{"b", NSDictionary{{"c", 1}}}}}}}};
}

/// Values at the limits of what plistlib supports.
PropertyListValue extremeTree() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return NSDictionary{{"nan", std::numeric_limits<double>::quiet_NaN()},
                        {"inf", infinity},
                        {"-inf", -infinity},
                        {"-0", -0.0},
                        {"subnormal", 5e-324},
                        {"largest", std::numeric_limits<double>::max()},
                        {"1e22", 1e22},
                        {"cr", "a\r\nb\r"},
                        {"before 1970", NSDate(-3e9)},
                        {"year 1", NSDate(-63113904000)},
                        {"year 9999", NSDate(252423993599)}};
}

// Compares types too: in Python 1 == 1.0 == True.
const std::string commonScript = R"(
expected = {
    "true": True, "false": False, "zero": 0, "byte": 255, "negative": -1,
    "lowest": -2**63, "highest signed": 2**63 - 1, "highest": 2**64 - 1,
    "one": 1.0, "tenth": 0.1, "negative real": -1234.5678,
    "empty": "", "blank": " \t\n ", "text": "a & <b> \"c\" 'd' \u00e9\u20ac\U0001F600\nline",
    "\u00e9 & key": "x", "data": b"\0\1\2\xff some bytes", "long data": b"\xa5" * 1000,
    "date": datetime.datetime(2001, 1, 1) + datetime.timedelta(seconds=700000000),
    "leap day": datetime.datetime(2024, 2, 29),
    "array": [1, "two", 3.5, [], {}, [[True]]], "dictionary": {"a": {"b": {"c": 1}}}}
def same(left, right):
    if type(left) is not type(right): return False
    if isinstance(left, dict):
        return left.keys() == right.keys() and all(same(left[key], right[key]) for key in left)
    if isinstance(left, list):
        return len(left) == len(right) and all(map(same, left, right))
    return left == right
)";

}  // namespace

TEST(Interoperation, PlistlibReadsWhatWeWrite) {
    writeFile("ours.plist", written(commonTree()));
    runPython(commonScript + R"(
with open("ours.plist", "rb") as file: assert same(plistlib.load(file), expected)
)");
}

TEST(Interoperation, PlistlibReadsExtremeValues) {
    writeFile("ours.plist", written(extremeTree()));
    runPython(R"(
with open("ours.plist", "rb") as file: tree = plistlib.load(file)
assert math.isnan(tree["nan"]) and tree["inf"] == math.inf and tree["-inf"] == -math.inf
assert tree["-0"] == 0 and math.copysign(1, tree["-0"]) == -1
assert tree["subnormal"] == 5e-324 and tree["largest"] == 1.7976931348623157e308
assert tree["1e22"] == 1e22 and type(tree["1e22"]) is float and tree["cr"] == "a\r\nb\r"
epoch = datetime.datetime(2001, 1, 1)
assert tree["before 1970"] == epoch - datetime.timedelta(seconds=3000000000)
assert tree["year 1"] == datetime.datetime(1, 1, 1)
assert tree["year 9999"] == datetime.datetime(9999, 12, 31, 23, 59, 59)
)");
}

TEST(Interoperation, WeReadWhatPlistlibWrites) {
    runPython(commonScript + R"(
with open("xml.plist", "wb") as file: plistlib.dump(expected, file)
with open("binary.plist", "wb") as file: plistlib.dump(expected, file, fmt=plistlib.FMT_BINARY)
)");
    EXPECT_TRUE(sameTree(readableXML(readFile("xml.plist")), commonTree()));
    EXPECT_TRUE(sameTree(readableBinary(readFile("binary.plist")), commonTree()));
}

TEST(Interoperation, ExtremeValuesComeBackFromPlistlib) {
    writeFile("ours.plist", written(extremeTree()));
    runPython(R"(
with open("ours.plist", "rb") as file: tree = plistlib.load(file)
with open("binary.plist", "wb") as file: plistlib.dump(tree, file, fmt=plistlib.FMT_BINARY)
del tree["cr"]
with open("xml.plist", "wb") as file: plistlib.dump(tree, file)
)");
    EXPECT_TRUE(sameTree(readableBinary(readFile("binary.plist")), extremeTree()));
    const NSMutableDictionary withoutCarriageReturns = extremeTree().dictionary().mutableCopy();
    withoutCarriageReturns.removeObjectForKey("cr");
    EXPECT_TRUE(sameTree(readableXML(readFile("xml.plist")), withoutCarriageReturns));
}

TEST(Interoperation, PlistutilReadsWhatWeWriteAndWeReadWhatItWrites) {
    writeFile("ours.plist", written(commonTree()));
    convert("ours.plist", "binary.plist", "bin");
    EXPECT_TRUE(sameTree(readableBinary(readFile("binary.plist")), commonTree()));
    convert("binary.plist", "xml.plist", "xml");
    EXPECT_TRUE(sameTree(readableXML(readFile("xml.plist")), commonTree()));
}

TEST(Interoperation, PlistutilAndPlistlibAgreeOnWhatWeWrite) {
    writeFile("ours.plist", written(commonTree()));
    convert("ours.plist", "binary.plist", "bin");
    runPython(commonScript + R"(
with open("binary.plist", "rb") as file: assert same(plistlib.load(file), expected)
)");
}
