// Address and new-entry dialog many times: what they took is given back.
#include <gtest/gtest.h>

#include "tests/ui/address/address_world.h"
#include "tests/ui/leak_check.h"

namespace orv::test {
namespace {

class AddressLeakTest : public AddressTest, public testing::WithParamInterface<ULONG> {};

TEST_P(AddressLeakTest, DialogWithSoManyWells) {
  const ULONG wells = GetParam();
  ExpectNothingStays([&] {
    list_ = MakeRecipients({{world_.company.EntryId("anna"), L"Anna", MAPI_TO},
                            {world_.company.EntryId("bernd"), L"Bernd", MAPI_CC}});
    EXPECT_EQ(S_OK, Show(wells, [&](DialogScript& script, HWND dialog) {
                if (wells > 0) {
                  SelectLines(script, dialog, kEntries, {1, 2});
                  script.Press(dialog, kToButton);
                }
                script.Close(dialog, IDOK);
              }));
    list_.Reset();
    world_.log.lines.clear();
  });
}
INSTANTIATE_TEST_SUITE_P(Wells, AddressLeakTest, testing::Values(0u, 1u, 2u, 3u));

TEST_F(AddressTest, NewEntryDialogLeavesNothing) {
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    // Counted on the helper thread: between two rounds the dialog's own only waits.
    ExpectNothingStays([&] {
      script.PostPress(dialog, kNew);
      const HWND question = script.NextDialog();
      script.PostPress(question, IDOK);
      script.WaitClosed(question);
      Settle(script, dialog);
      world_.log.lines.clear();
    });
  });
}

}  // namespace
}  // namespace orv::test
