#include "quorvane/scan/backups/PropertyList.h"

#include "quorvane/scan/backups/PropertyListCheck.h"
#include "tests/support/BinaryPropertyList.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace quorvane {
namespace {

using namespace std::string_literals;

std::string xml(const std::string& entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" "
         "\"http://example.org/p.dtd\">\n<plist version=\"1.0\">\n<dict>" +
         entries + "</dict>\n</plist>\n";
}

std::string bigEndian(std::uint64_t value, int bytes) {
  std::string text;
  while (bytes-- > 0) text.push_back(static_cast<char>(value >> (8 * bytes) & 0xFF));
  return text;
}

/// A binary property list of objects written by hand; references and offsets take three bytes, the first is the root.
std::string binaryOf(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00";
  std::string table;
  for (const std::string& object : objects) {
    table += bigEndian(bytes.size(), 3);
    bytes += object;
  }
  const std::size_t tableOffset = bytes.size();
  return bytes + table + bigEndian(0, 6) + "\3\3" + bigEndian(objects.size(), 8) + bigEndian(0, 8) +
         bigEndian(tableOffset, 8);
}

std::string arrayOf(const std::vector<std::uint64_t>& references) {
  std::string object(1, static_cast<char>(0xA0 | references.size()));
  for (const std::uint64_t reference : references) object += bigEndian(reference, 3);
  return object;
}

/// {"k": third object}
std::vector<std::string> dictionaryAround(const std::vector<std::string>& rest) {
  std::vector<std::string> objects = {"\xD1"s + bigEndian(1, 3) + bigEndian(2, 3), "\x51k"};
  objects.insert(objects.end(), rest.begin(), rest.end());
  return objects;
}

std::string dateObject(double seconds) { return "\x33" + bigEndian(std::bit_cast<std::uint64_t>(seconds), 8); }

TEST(PropertyListTests, readsTheSameFromBothForms) {
  const std::string text =
      xml("<key>name</key><string>J\xC3\xB6rg &amp; \xF0\x9F\x98\x80</string><key>yes</key><true/><key>no</key><false/>"
          "<key>date</key><date>2024-05-06T07:08:09Z</date><key>before</key><date>1999-12-31T23:59:59Z</date>"
          "<key>count</key><integer>42</integer>"
          "<key>list</key><array><dict><key>name</key><string>inner</string></dict></array>");
  for (const std::string& bytes : {text, binaryPropertyList(text), "\xEF\xBB\xBF" + text}) {
    const auto list = PropertyList::parse(bytes);
    ASSERT_TRUE(list);
    EXPECT_EQ(list->text("name"), "J\xC3\xB6rg & \xF0\x9F\x98\x80");
    EXPECT_EQ(list->boolean("yes"), true);
    EXPECT_EQ(list->boolean("no"), false);
    EXPECT_EQ(list->date("date"), dateFromIsoText("2024-05-06T07:08:09Z"));
    EXPECT_EQ(list->date("before"), dateFromIsoText("1999-12-31T23:59:59Z"));
    EXPECT_EQ(list->text("inner"), std::nullopt);
    EXPECT_EQ(list->text("yes"), std::nullopt);
    EXPECT_EQ(list->boolean("name"), std::nullopt);
    EXPECT_EQ(list->date("count"), std::nullopt);
  }
}

TEST(PropertyListTests, readsDatesOfTheBinaryFormToTheMicrosecond) {
  using std::chrono::microseconds;
  const Date origin = *dateFromIsoText("2001-01-01T00:00:00Z");
  const std::pair<double, std::optional<Date>> dates[] = {
      {0, origin},
      {1.5, origin + microseconds(1'500'000)},
      {-1.5, origin - microseconds(1'500'000)},
      {64'092'211'200, std::nullopt},   // the year 4001, which stands for "never"
      {-63'114'076'800, std::nullopt},  // the year 1
      {std::numeric_limits<double>::infinity(), std::nullopt},
  };
  for (const auto& [seconds, date] : dates) {
    const auto list = PropertyList::parse(binaryOf(dictionaryAround({dateObject(seconds)})));
    ASSERT_TRUE(list) << seconds;
    EXPECT_EQ(list->date("k"), date) << seconds;
  }
}

TEST(PropertyListTests, replacesBytesThatAreNotUtf8) {
  const auto list = PropertyList::parse(xml("<key>k</key><string>a\xFF</string>"));
  ASSERT_TRUE(list);
  EXPECT_EQ(list->text("k"), "a\xEF\xBF\xBD");
}

TEST(PropertyListTests, refusesWhatIsNone) {
  const std::string good = xml("<key>k</key><true/>");
  const std::pair<std::string, PropertyListFault> texts[] = {
      {"", PropertyListFault::malformed},
      {"not a list", PropertyListFault::malformed},
      {"bplist00", PropertyListFault::malformed},
      {good.substr(0, good.size() / 2), PropertyListFault::malformed},
      {binaryPropertyList(good).substr(1), PropertyListFault::malformed},
      {binaryPropertyList(good) + "x", PropertyListFault::malformed},
      {"<dict></dict>", PropertyListFault::malformed},
      {good + '\0', PropertyListFault::malformed},
      {"<plist version=\"1.0\"><array/></plist>", PropertyListFault::notADictionary},
      {binaryOf({"\x09"}), PropertyListFault::notADictionary},
      {good + std::string(PropertyList::mostBytes, ' '), PropertyListFault::tooLarge},
      {xml("<key>k</key><date>yesterday</date>"), PropertyListFault::malformed},
      {xml("<key>k</key><date>2024-02-30T07:08:09Z</date>"), PropertyListFault::malformed},
      {xml("<key>k</key><date/>"), PropertyListFault::malformed},
      {xml("<key>k</key><date a=\"b\">x</date>"), PropertyListFault::malformed},
      {binaryOf(dictionaryAround({dateObject(std::numeric_limits<double>::quiet_NaN())})),
       PropertyListFault::malformed},
  };
  for (const auto& [text, fault] : texts) {
    const auto list = PropertyList::parse(text);
    ASSERT_FALSE(list) << text.substr(0, 200);
    EXPECT_EQ(caseName(list.error()), caseName(fault)) << text.substr(0, 200);
  }
}

/// Arrays in arrays, the last of them empty.
std::string nestedBinary(std::size_t arrays) {
  std::vector<std::string> rest;
  for (std::size_t i = 1; i < arrays; ++i) rest.push_back(arrayOf({i + 2}));
  rest.push_back("\xA0");
  return binaryOf(dictionaryAround(rest));
}

std::string nestedXml(std::size_t arrays, const std::string& opening) {
  std::string text = "<key>k</key>";
  for (std::size_t i = 0; i < arrays; ++i) text += opening;
  for (std::size_t i = 0; i < arrays; ++i) text += "</array>";
  return xml(text);
}

TEST(PropertyListTests, goesOnlySoDeep) {
  const std::size_t deepest = deepestPropertyList - 1;  // within the dictionary
  EXPECT_TRUE(PropertyList::parse(nestedBinary(deepest)));
  EXPECT_FALSE(PropertyList::parse(nestedBinary(deepest + 1)));
  EXPECT_FALSE(PropertyList::parse(nestedBinary(100'000)));
  EXPECT_TRUE(PropertyList::parse(nestedXml(deepest, "<array>")));
  // Closing tags that are none do not lessen the depth.
  for (const char* opening :
       {"<array>", "<array><!--</array>-->", "<array><?</array>?>", "<array a=\"</array>\">", "<array a=\"></array>\">",
        "<array><![CDATA[</array>]]>", "<array><plist a=\"></array>\">"})
    EXPECT_FALSE(isHarmlessXmlPropertyList(nestedXml(deepest + 1, opening))) << opening;
}

TEST(PropertyListTests, takesManyValuesSideBySide) {
  std::string entries;
  for (int i = 0; i < 5000; ++i) entries += "<key>" + std::to_string(i) + "</key><dict><key>a</key><array/></dict>";
  const auto list = PropertyList::parse(xml(entries + "<key>k</key><true/>"));
  ASSERT_TRUE(list);
  EXPECT_EQ(list->boolean("k"), true);
}

TEST(PropertyListTests, refusesWhatGrowsOrCircles) {
  EXPECT_FALSE(PropertyList::parse(binaryOf(dictionaryAround({arrayOf({0})})))) << "a circle";
  EXPECT_FALSE(PropertyList::parse(binaryOf(dictionaryAround({arrayOf({2})})))) << "a short circle";

  std::vector<std::string> doubling;
  for (std::uint64_t i = 3; i < 43; ++i) doubling.push_back(arrayOf({i, i}));
  doubling.push_back("\x09");
  EXPECT_FALSE(PropertyList::parse(binaryOf(dictionaryAround(doubling)))) << "a million millions of copies";

  const std::string longText = "\x5F\x12" + bigEndian(4'000'000, 4) + std::string(4'000'000, 'x');
  const auto repeated = dictionaryAround({arrayOf(std::vector<std::uint64_t>(14, 3)), arrayOf({4, 4, 4, 4}), longText});
  EXPECT_FALSE(PropertyList::parse(binaryOf(repeated))) << "copies of a long text";

  std::string entities;
  for (int i = 0; i < 500'000; ++i) entities += "&amp;";
  EXPECT_FALSE(PropertyList::parse(xml("<key>k</key><string>" + entities + "</string>"))) << "a text of entities";
}

}  // namespace
}  // namespace quorvane
