// Address and new-entry dialog many times: what they took is given back.
#include <gtest/gtest.h>

#include "tests/ui/address/address_world.h"
#include "tests/ui/leak_check.h"

namespace orv::test {
namespace {

TEST_F(AddressTest, DialogWithAndWithoutWellsInTurnLeavesNothing) {
  ExpectNothingStays([&, wells = 0u]() mutable {
    wells = 3 - wells;
    list_ = MakeRecipients({{Id("anna"), L"Anna", MAPI_TO}, {Id("bernd"), L"Bernd", MAPI_CC}});
    ShowAndConfirm(wells, [&](Pilot pilot) {
      if (wells > 0) pilot.PressFor({1, 2}, kToButton);
    });
    list_.Reset();
    world_.log.lines.clear();
  });
}

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
