// One of several processes that change the same profile at the same time.
#include <cstdio>

#include "soak/library.h"

namespace orv::soak {
namespace {

constexpr unsigned kKeepEvery = 8;
constexpr size_t kProfilesKept = 4;  // a member; each one makes every listing of the others longer

std::string Hex(const Uid& uid) {
  std::string text;
  for (const BYTE byte : uid) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

void ChangeServices(IABServiceAdmin* services, const WString& name, bool keeps) {
  const Uid uid = AddService(services, kNamed, name);
  if (keeps) return void(std::printf("kept %s\n", Hex(uid).c_str()));
  const HRESULT result = services->DeleteMsgService(AsUid(uid));
  if (result == MAPI_E_NOT_FOUND) throw std::runtime_error("lost: a service that was added is gone");
  Check(result, "DeleteMsgService");
}

void ChangeProfiles(const WString& name, bool keeps) {
  Check(Profiles()->CreateProfile(name.c_str(), 0, MAPI_UNICODE), "CreateProfile");
  if (keeps) return void(std::printf("kept %ls\n", name.c_str()));
  Check(Profiles()->DeleteProfile(name.c_str(), MAPI_UNICODE), "DeleteProfile");
}

void PrintFound() {
  for (const auto& [uid, columns] : ReadStored(kBase)) std::printf("found %s\n", Hex(uid).c_str());
  ComPtr<IMAPITable> table;
  Check(Profiles()->GetProfileTable(MAPI_UNICODE, table.Put()), "GetProfileTable");
  ForEachRow(table.Get(), nullptr,
             [](const ValueView& row) { std::printf("found %ls\n", row.Text(PR_DISPLAY_NAME_W)); });
}

}  // namespace

// 0 seconds: says what is there.
void RunMember(unsigned number, unsigned seconds) {
  if (seconds == 0) return PrintFound();
  const auto shared = ServicesOf(kBase);
  const ULONGLONG end = GetTickCount64() + seconds * 1000ULL;
  unsigned turn = 0;
  for (; GetTickCount64() < end; ++turn) {
    const WString name = L"member " + std::to_wstring(number) + L"-" + std::to_wstring(turn);
    try {
      // An object that has seen the others' services, and one that has not.
      ChangeServices(turn % 2 != 0 ? shared.Get() : ServicesOf(kBase).Get(), name, turn % kKeepEvery == 0);
      ChangeProfiles(name, turn < kProfilesKept);
    } catch (const std::exception& error) {
      std::printf("unexpected %s\n", error.what());
    }
  }
  std::printf("done %u\n", turn);
}

}  // namespace orv::soak
