// orv_soak MODE ...: one subject of the soak; the exit code is 0 when it came to its end, 3 when something failed.
#include <cstdio>
#include <cstdlib>

#include "soak/library.h"

namespace {

// Below here everything is stored that any process of a soak writes.
constexpr const WCHAR* kSoakKey = L"Software\\OrvSoak";

void RedirectRegistry() {
  HKEY key = nullptr;
  RegCreateKeyExW(HKEY_CURRENT_USER, kSoakKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
  RegOverridePredefKey(HKEY_CURRENT_USER, key);
  RegCloseKey(key);
}

void Run(const std::string& mode, const std::string& what, unsigned a, unsigned b, unsigned c) {
  if (mode == "clear") return void(RegDeleteTreeW(HKEY_CURRENT_USER, kSoakKey));
  RedirectRegistry();
  if (mode == "serve") return orv::soak::ServeChecks();
  if (mode == "change") return orv::soak::ChangeForEver(what);
  if (mode == "member") return orv::soak::RunMember(a, b);
  if (mode == "threads") return orv::soak::RunThreads(what, a);
  if (mode == "repeat") return orv::soak::RunRepeats(what, a);
  if (mode == "damage") return orv::soak::RunDamage(what, a, b, c);
  throw std::runtime_error("no such mode");
}

}  // namespace

int main(int count, char** arguments) {
  const auto text = [&](int i) { return std::string(i < count ? arguments[i] : ""); };
  const auto number = [&](int i) { return static_cast<unsigned>(std::atoi(text(i).c_str())); };
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  try {
    Run(text(1), text(2), number(3), number(4), number(5));
    std::printf("end 1\n");
    return 0;
  } catch (const std::exception& error) {
    std::printf("failed %s\n", error.what());
    return 3;
  }
}
