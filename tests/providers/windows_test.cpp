// The windows of contacts.
#include "tests/providers/windows_fixture.h"

namespace orv::test {
namespace {

using formats::NumberKind;
using formats::Place;

TEST_F(WindowsTest, ANewContactIsTypedAndStored) {
  Client client;
  Bytes id;
  EXPECT_EQ(New(
                client, MAPI_MAILUSER,
                [](DialogScript&, Pilot window) {
                  EXPECT_EQ(window.Text(IDC_STATUS), L"Type a display name: it is missing.");
                  EXPECT_FALSE(window.IsEnabled(IDOK));
                  window.Type(IDC_GIVEN, L"Ida");
                  window.Type(IDC_SURNAME, L"Wells");
                  EXPECT_EQ(window.Text(IDC_NAME), L"Ida Wells");
                  window.Turn(1);
                  EXPECT_TRUE(window.IsShown(IDC_NUMBER));
                  window.Type(IDC_NUMBER, L"+49 30 1");
                  window.Key(IDC_NUMBER, VK_RETURN);
                  window.Settle();
                  EXPECT_EQ(window.Rows(IDC_NUMBERS, 3), (Names{L"+49 30 1|Business fax|yes"}));
                  window.Close(IDOK);
                },
                &id),
            S_OK);
  EXPECT_EQ(client.Text(id), L"Ida Wells");
  EXPECT_EQ(client.Text(id, PR_EMAIL_ADDRESS), L"+49 30 1");
}

}  // namespace
}  // namespace orv::test
