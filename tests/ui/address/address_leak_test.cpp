// Address and new-entry dialog many times: what they took is given back.
#include <gtest/gtest.h>

#include "tests/ui/address/address_world.h"
#include "tests/ui/leak_check.h"

namespace orv::test {
namespace {

class AddressLeakTest : public AddressTest, public testing::WithParamInterface<ULONG> {};

TEST_P(AddressLeakTest, DialogWithSoManyWells) {
  ExpectNothingStays([&] {
    list_ = MakeRecipients({{Id("anna"), L"Anna", MAPI_TO}, {Id("bernd"), L"Bernd", MAPI_CC}});
    ShowAndConfirm(GetParam(), [&](Pilot pilot) {
      if (GetParam() > 0) pilot.PressFor({1, 2}, kToButton);
    });
    list_.Reset();
    world_.log.lines.clear();
  });
}
INSTANTIATE_TEST_SUITE_P(Wells, AddressLeakTest, testing::Values(0u, 3u));

TEST_F(AddressTest, NewEntryDialogLeavesNothing) {
  ShowAndCancel(0, [&](Pilot pilot) {
    // Counted on the helper thread: between two rounds the dialog's own only waits.
    ExpectNothingStays([&] {
      pilot.AnswerNewEntry(IDOK);
      world_.log.lines.clear();
    });
  });
}

}  // namespace
}  // namespace orv::test
