// Which fields of a record become which properties.
#include "formats/vcard_properties.h"

#include <gtest/gtest.h>

#include <map>

namespace formats {
namespace {

Properties PropertiesOf(const std::string& lines) {
  const VCardFile file =
      VCardFile::FromBytes("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:X\r\n" + lines + "END:VCARD\r\n");
  EXPECT_EQ(file.size(), 1u) << lines;
  return file.size() == 1 ? VCardProperties(file.Parse(0)) : Properties();
}

// Texts only, by tag.
using Texts = std::map<ULONG, std::u16string>;

Texts TextsOf(const std::string& lines) {
  Texts texts;
  for (const Property& each : PropertiesOf(lines)) {
    if (each.tag == PR_DISPLAY_NAME) continue;
    if (const auto* text = std::get_if<std::u16string>(&each.value)) texts[each.tag] = *text;
  }
  return texts;
}

TEST(VCardProperties, EveryFieldHasItsTag) {
  struct Case {
    const char* lines;
    Texts texts;
  };
  const Case cases[] = {
      {"N:Roe;Jane;;;\r\nORG:Acme\\; Inc.;Sales;East\r\nTITLE:Boss\r\nNOTE:hello\r\n",
       {{PR_SURNAME, u"Roe"},
        {PR_GIVEN_NAME, u"Jane"},
        {PR_COMPANY_NAME, u"Acme; Inc."},
        {PR_DEPARTMENT_NAME, u"Sales, East"},
        {PR_TITLE, u"Boss"},
        {PR_COMMENT, u"hello"}}},
      {"EMAIL:a@x\r\nEMAIL:b@x\r\n",
       {{PR_ADDRTYPE, u"SMTP"}, {PR_EMAIL_ADDRESS, u"a@x"}, {PR_SMTP_ADDRESS, u"a@x"}}},
      {"EMAIL:a@x\r\nTEL;TYPE=FAX,HOME:1\r\nTEL;TYPE=FAX:2\r\nTEL;TYPE=FAX,WORK:3\r\n",
       {{PR_ADDRTYPE, u"FAX"},
        {PR_EMAIL_ADDRESS, u"1"},
        {PR_SMTP_ADDRESS, u"a@x"},
        {PR_HOME_FAX_NUMBER, u"1"},
        {PR_PRIMARY_FAX_NUMBER, u"2"},
        {PR_BUSINESS_FAX_NUMBER, u"3"}}},
      // The second of a kind has a tag of its own, the third is left out.
      {"TEL;TYPE=WORK:1\r\nTEL;TYPE=WORK:2\r\nTEL;TYPE=WORK:3\r\nTEL;TYPE=HOME:4\r\nTEL;TYPE=HOME:5\r\n"
       "TEL;TYPE=CELL:6\r\nTEL;TYPE=PAGER:7\r\nTEL:8\r\nTEL:9\r\nTEL:10\r\n",
       {{PR_BUSINESS_TELEPHONE_NUMBER, u"1"},
        {PR_BUSINESS2_TELEPHONE_NUMBER, u"2"},
        {PR_HOME_TELEPHONE_NUMBER, u"4"},
        {PR_HOME2_TELEPHONE_NUMBER, u"5"},
        {PR_MOBILE_TELEPHONE_NUMBER, u"6"},
        {PR_PAGER_TELEPHONE_NUMBER, u"7"},
        {PR_PRIMARY_TELEPHONE_NUMBER, u"8"},
        {PR_OTHER_TELEPHONE_NUMBER, u"9"}}},
      // Parts of two addresses of one place never mix.
      {"ADR;TYPE=WORK:box;floor;street\\nrear;city;region;zip;country;surplus\r\nADR;TYPE=WORK:;;;;;;"
       "elsewhere\r\n"
       "ADR;TYPE=HOME:;;;\r\nADR;TYPE=HOME:;;lane;village\r\n",
       {{PR_POST_OFFICE_BOX, u"box"},
        {PR_STREET_ADDRESS, u"street\nrear"},
        {PR_LOCALITY, u"city"},
        {PR_STATE_OR_PROVINCE, u"region"},
        {PR_POSTAL_CODE, u"zip"},
        {PR_COUNTRY, u"country"},
        {PR_HOME_ADDRESS_STREET, u"lane"},
        {PR_HOME_ADDRESS_CITY, u"village"}}},
      {"ADR;TYPE=WORK:;;street;;;;\r\nADR;TYPE=WORK:;;;other city;;;\r\n", {{PR_STREET_ADDRESS, u"street"}}},
  };
  for (const Case& c : cases) EXPECT_EQ(TextsOf(c.lines), c.texts) << c.lines;
}

TEST(VCardProperties, GroupsAreListsAndPeopleMailUsers) {
  const Properties group = PropertiesOf("X-ADDRESSBOOKSERVER-KIND:group\r\nTEL;TYPE=FAX:1\r\n");
  EXPECT_EQ(std::get<LONGLONG>(FindProperty(group, PR_OBJECT_TYPE)->value), LONGLONG{MAPI_DISTLIST});
  EXPECT_EQ(std::get<std::u16string>(FindProperty(group, PR_ADDRTYPE)->value), u"MAPIPDL");
  EXPECT_EQ(FindProperty(group, PR_EMAIL_ADDRESS), nullptr);
  // The identifier decides, not the type that is asked for.
  EXPECT_EQ(FindProperty(group, PR_DISPLAY_NAME_A), FindProperty(group, PR_DISPLAY_NAME_W));
}

}  // namespace
}  // namespace formats
