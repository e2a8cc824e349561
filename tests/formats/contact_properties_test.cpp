// Which fields of a contact become which properties.
#include "formats/contact_properties.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "formats/contact_io.h"

namespace formats {
namespace {

std::u16string TextsOf(const std::string& lines, const std::vector<ULONG>& tags) {
  Contact contact;
  EXPECT_TRUE(ReadCard("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:X\r\n" + lines + "END:VCARD\r\n", &contact));
  const Properties all = ContactProperties(contact, MainFax(contact));
  std::u16string texts;
  for (const ULONG tag : tags) {
    const auto found =
        std::find_if(all.begin(), all.end(), [tag](const Property& each) { return each.tag == tag; });
    texts += (found != all.end() ? std::get<std::u16string>(found->value) : u"(none)") + u"|";
  }
  const auto isText = [](const Property& each) { return std::holds_alternative<std::u16string>(each.value); };
  // The name under two tags, and the type of address.
  EXPECT_EQ(std::count_if(all.begin(), all.end(), isText), std::ssize(tags) + 3) << "others";
  return texts;
}

TEST(ContactProperties, EveryFieldHasItsTag) {
  const struct {
    const char* lines;
    std::vector<ULONG> tags;
    const char16_t* texts;  // of these tags; there are no others but those of every contact
  } cases[] = {
      {"N:Roe;Jane;;;\r\nORG:Acme\\; Inc.;Sales;East\r\nTITLE:Boss\r\nNOTE:hello\r\n",
       {PR_SURNAME, PR_GIVEN_NAME, PR_COMPANY_NAME, PR_DEPARTMENT_NAME, PR_TITLE, PR_COMMENT},
       u"Roe|Jane|Acme; Inc.|Sales, East|Boss|hello|"},
      {"EMAIL:a@x\r\nEMAIL:b@x\r\n", {PR_SMTP_ADDRESS}, u"a@x|"},
      {"EMAIL:a@x\r\nTEL;TYPE=FAX,HOME:1\r\nTEL;TYPE=FAX:2\r\nTEL;TYPE=FAX,WORK:3\r\n",
       {PR_EMAIL_ADDRESS, PR_SMTP_ADDRESS, PR_HOME_FAX_NUMBER, PR_PRIMARY_FAX_NUMBER, PR_BUSINESS_FAX_NUMBER},
       u"3|a@x|1|2|3|"},
      // The second of a kind has a tag of its own, the third is left out.
      {"TEL;TYPE=WORK:1\r\nTEL;TYPE=WORK:2\r\nTEL;TYPE=WORK:3\r\nTEL;TYPE=HOME:4\r\nTEL;TYPE=HOME:5\r\n"
       "TEL;TYPE=CELL:6\r\nTEL;TYPE=PAGER:7\r\nTEL:8\r\nTEL:9\r\n",
       {PR_BUSINESS_TELEPHONE_NUMBER, PR_BUSINESS2_TELEPHONE_NUMBER, PR_HOME_TELEPHONE_NUMBER,
        PR_HOME2_TELEPHONE_NUMBER, PR_MOBILE_TELEPHONE_NUMBER, PR_PAGER_TELEPHONE_NUMBER,
        PR_PRIMARY_TELEPHONE_NUMBER},
       u"1|2|4|5|6|7|8|"},
      // Parts of two addresses of one place never mix.
      {"ADR;TYPE=WORK:box;floor;street\\nrear;city;region;zip;country;surplus\r\nADR;TYPE=WORK:;;;;;;"
       "elsewhere\r\n"
       "ADR;TYPE=HOME:;;;\r\nADR;TYPE=HOME:;;lane;village\r\n",
       {PR_POST_OFFICE_BOX, PR_STREET_ADDRESS, PR_LOCALITY, PR_STATE_OR_PROVINCE, PR_POSTAL_CODE, PR_COUNTRY,
        PR_HOME_ADDRESS_STREET, PR_HOME_ADDRESS_CITY},
       u"box|street\nrear|city|region|zip|country|lane|village|"},
      {"ADR;TYPE=WORK:;;street;;;;\r\nADR;TYPE=WORK:;;;other city;;;\r\n", {PR_STREET_ADDRESS}, u"street|"},
  };
  for (const auto& c : cases) EXPECT_EQ(TextsOf(c.lines, c.tags), c.texts) << c.lines;
}

}  // namespace
}  // namespace formats
