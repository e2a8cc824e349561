#include "profiles/profile_lock.h"

#include <sddl.h>

#include <vector>

#include "orv/orvcodes.h"
#include "platform/identity.h"
#include "platform/process.h"

namespace orv {
namespace {

constexpr DWORD kPatience = 10000;  // milliseconds

// Names of keys are told apart without regard to case, so names of locks are made of one case.
WString Folded(WString name) {
  CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
  return name;
}

// The user whose profiles they are, as text: sessions of one user share them, users do not.
WString ReadUserName() {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return {};
  std::vector<std::byte> user(sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE);
  DWORD size = static_cast<DWORD>(user.size());
  LPWSTR text = nullptr;
  const bool known = GetTokenInformation(token, TokenUser, user.data(), size, &size) &&
                     ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, &text);
  CloseHandle(token);
  const WString name = known ? WString(text) : WString();
  LocalFree(text);
  return name;
}

const WString& UserName() {
  static const WString name = ReadUserName();
  return name;
}

// Of all sessions: a user who is logged on twice has one registry.
WString LockName(const WString& what) {
  const auto model = ModelName(process::Instance());
  return L"Global\\Velmora-" + UserName() + L"-" + (model ? *model : WString()) + L"-" + what;
}

HRESULT Take(const WString& what, NamedLock& lock) {
  lock = NamedLock::Take(LockName(what), UserName(), kPatience);
  return lock ? S_OK : MAPI_E_BUSY;
}

WString OfProfile(const WString& profile) { return L"profile-" + Folded(profile); }

}  // namespace

HRESULT ProfileLock::TakeProfile(const WString& profile) { return Take(OfProfile(profile), first_); }

HRESULT ProfileLock::TakeProfiles(const WString& one, const WString& other) {
  const WString a = OfProfile(one);
  const WString b = OfProfile(other);
  if (const HRESULT hr = Take(a < b ? a : b, first_); FAILED(hr)) return hr;
  return Take(a < b ? b : a, second_);
}

HRESULT ProfileLock::TakeList() { return Take(L"list", list_); }

}  // namespace orv
