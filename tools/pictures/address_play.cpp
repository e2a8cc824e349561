#include "tools/pictures/address_play.h"

#include "tools/pictures/numbers.h"

namespace pictures {

void PlayAddress(const Edition& edition, const std::string& scene, const Book& book, const Wells& wells,
                 const std::function<void(Script&, HWND)>& act, ULONG flags) {
  Play(
      edition, scene, [&] { book.Address(wells, flags); },
      [&](Script& script) {
        HWND dialog = script.NextDialog(kNoWells + static_cast<int>(wells.types.size()));
        act(script, dialog);
        script.Close(dialog, IDCANCEL);
      });
}

}  // namespace pictures
