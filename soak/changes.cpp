// Changes that a kill may hit at any moment, and what must hold afterwards.
#include <cstdio>
#include <iostream>

#include "soak/library.h"

namespace orv::soak {
namespace {

constexpr const WCHAR* kLarge = L"soak large";
constexpr const WCHAR* kOther = L"soak other";
constexpr const WCHAR* kCopy = L"soak copy";
constexpr unsigned kBaseServices = 3, kLargeServices = 10;

// The containers of a profile that a default folder may name.
std::vector<std::vector<BYTE>> ReadContainers(IAddrBook* book) {
  std::vector<std::vector<BYTE>> containers;
  ForEachRow(HierarchyOf(book).Get(), nullptr, [&](const ValueView& row) {
    const SBinary id = row.Binary(PR_ENTRYID);
    if ((row.Number(PR_CONTAINER_FLAGS) & AB_RECIPIENTS) != 0)
      containers.emplace_back(id.lpb, id.lpb + id.cb);
  });
  Require(!containers.empty(), "no container");
  return containers;
}

Uid FirstService(const WString& profile) { return ReadStored(profile).begin()->first; }

void CopyAndDelete(const WCHAR* from) {
  Check(Profiles()->CopyProfile(from, kCopy, MAPI_UNICODE), "CopyProfile");
  DeleteProfile(kCopy);
}

void Copy(unsigned) { CopyAndDelete(kBase); }
void DeleteLarge(unsigned) { CopyAndDelete(kLarge); }

void Rename(unsigned) {
  if (HasProfile(kBase)) Check(Profiles()->RenameProfile(kBase, kCopy, MAPI_UNICODE), "RenameProfile");
  Check(Profiles()->RenameProfile(kCopy, kBase, MAPI_UNICODE), "RenameProfile back");
}

void AddAndRemove(unsigned turn) {
  const auto services = ServicesOf(kBase);
  const Uid uid = AddService(services.Get(), kNamed, L"changed " + std::to_wstring(turn));
  Check(services->DeleteMsgService(AsUid(uid)), "DeleteMsgService");
}

void SaveSection(unsigned turn) {
  WriteTexts(SectionOf(ServicesOf(kBase).Get(), FirstService(kBase)).Get(), turn);
}

void Create(unsigned) {
  Check(Profiles()->CreateProfile(kCopy, 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES), "CreateProfile");
  DeleteProfile(kCopy);
}

// Default folder and search path name the same container, another one each time.
void ChangeSettings(unsigned turn) {
  const auto session = LogOn(kBase);
  const auto book = BookOf(session);
  auto containers = ReadContainers(book.Get());
  auto& id = containers[turn % containers.size()];
  SPropValue value{};
  value.ulPropTag = PR_ENTRYID;
  value.Value.bin = {static_cast<ULONG>(id.size()), id.data()};
  SRowSet path{1, {{0, 1, &value}}};
  Check(book->SetDefaultDir(value.Value.bin.cb, reinterpret_cast<ENTRYID*>(id.data())), "SetDefaultDir");
  Check(book->SetSearchPath(0, &path), "SetSearchPath");
}

void Configure(unsigned turn) {
  WString text = std::to_wstring(turn);
  ComPtr<IProfSect> section;
  const Uid uid = FirstService(kBase);
  Check(ServicesOf(kBase)->ConfigureMsgService(AsUid(uid), 0, MAPI_UNICODE, kTexts, TextValues(text).data(),
                                               section.Put()),
        "ConfigureMsgService");
}

struct Operation {
  const char* name;
  void (*step)(unsigned turn);
  const WCHAR* source;
  size_t more;  // services that it may have besides those of before
};
constexpr Operation kOperations[] = {{"copy", Copy, kBase, 0},
                                     {"rename", Rename, kBase, 0},
                                     {"services", AddAndRemove, kBase, 1},
                                     {"section", SaveSection, kBase, 0},
                                     {"create", Create, kBase, 0},
                                     {"delete", DeleteLarge, kLarge, 0},
                                     {"settings", ChangeSettings, kBase, 0},
                                     {"configure", Configure, kBase, 0}};

const Operation& FindOperation(const std::string& name) {
  for (const Operation& each : kOperations) {
    if (each.name == name) return each;
  }
  throw std::runtime_error("no such operation");
}

// What a process before this one left behind may be in the way of the next.
void TidyUp(const Operation& operation) {
  if (!HasProfile(kBase)) Check(Profiles()->RenameProfile(kCopy, kBase, MAPI_UNICODE), "RenameProfile");
  DeleteProfile(kCopy);
  const auto services = ServicesOf(kBase);
  const Stored other = ReadStored(kOther);
  for (const auto& [uid, columns] : ReadStored(kBase)) {
    if (!other.contains(uid)) Check(services->DeleteMsgService(AsUid(uid)), "DeleteMsgService");
  }
  if (operation.step != Rename) ChangeSettings(0);  // which a renamed profile leaves behind
}

void MakeProfile(const WCHAR* name, unsigned services) {
  DeleteProfile(name);
  Check(Profiles()->CreateProfile(name, 0, MAPI_UNICODE), "CreateProfile");
  const auto admin = ServicesOf(name);
  for (unsigned i = 0; i < services; ++i) {
    WString file = PathBeside(L"soak" + std::to_wstring(i % kBaseServices) + L".vcf");
    const Uid uid = AddService(admin.Get(), kNamed, L"service " + std::to_wstring(i));
    SPropValue value{};
    value.ulPropTag = PR_ORV_BOOK_FILE_W;
    value.Value.lpszW = file.data();
    ComPtr<IProfSect> section;
    Check(admin->ConfigureMsgService(AsUid(uid), 0, MAPI_UNICODE, 1, &value, section.Put()),
          "ConfigureMsgService");
  }
  WriteTexts(SectionOf(admin.Get(), FirstService(name)).Get(), 0);
}

using Expected = std::map<WString, Stored>;

Expected Prepare() {
  DeleteProfile(kCopy);
  MakeProfile(kSmall, 1);
  MakeProfile(kBase, kBaseServices);
  MakeProfile(kLarge, kLargeServices);
  DeleteProfile(kOther);
  Check(Profiles()->CopyProfile(kBase, kOther, MAPI_UNICODE), "CopyProfile");
  ChangeSettings(0);
  return {{kBase, ReadStored(kBase)}, {kLarge, ReadStored(kLarge)}, {kOther, ReadStored(kOther)}};
}

void RequireSettingsOfOne(const WString& profile) {
  const auto session = LogOn(profile);
  const auto book = BookOf(session);
  auto directory = TheLibrary().allocator.Own<ENTRYID>();
  auto path = TheLibrary().allocator.Own<SRowSet>();
  ULONG size = 0;
  Check(book->GetDefaultDir(&size, directory.Put()), "GetDefaultDir");
  Check(book->GetSearchPath(0, path.Put()), "GetSearchPath");
  const SBinary searched = ValueView(path->aRow[0]).Binary(PR_ENTRYID);
  Require(path->cRows == 1 && searched.cb == size && std::memcmp(searched.lpb, directory.Get(), size) == 0,
          "settings of two generations");
}

// Services of before are all there with all their columns; besides them at most as many as may be.
void RequireWhole(const WString& profile, const Stored& expected, size_t more) {
  const Stored found = ReadStored(profile);
  for (const auto& [uid, columns] : expected) {
    const auto same = found.find(uid);
    Require(same != found.end(), "lost: a service is gone");
    Require(same->second == columns, "a service has lost columns");
  }
  Require(found.size() <= expected.size() + more, "a service came from nowhere");
  LogOn(profile);
}

void CheckCopy(const Operation& operation, const Expected& expected) {
  if (!HasProfile(kCopy)) return;
  if (operation.step != Create) return RequireWhole(kCopy, expected.at(operation.source), 0);
  Require(ReadStored(kCopy).size() == 1, "a created profile without its default service");
  LogOn(kCopy);
}

void CheckAfter(const Operation& operation, const Expected& expected) {
  const bool renames = operation.step == Rename;
  Require(HasProfile(kLarge) && HasProfile(kOther), "lost: a profile is gone");
  Require(renames ? HasProfile(kBase) != HasProfile(kCopy) : HasProfile(kBase),
          "lost: not exactly one of both names");
  for (const auto& [profile, stored] : expected) {
    if (HasProfile(profile)) RequireWhole(profile, stored, profile == operation.source ? operation.more : 0);
  }
  CheckCopy(operation, expected);
  const WString now = HasProfile(kBase) ? kBase : kCopy;
  RequireOneGeneration(now, expected.at(kBase).begin()->first);
  if (!renames) RequireSettingsOfOne(now);
}

}  // namespace

void ServeChecks() {
  Expected expected;
  for (std::string line; std::getline(std::cin, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    try {
      if (line == "prepare") {
        expected = Prepare();
      } else {
        CheckAfter(FindOperation(line), expected);
      }
      std::puts("whole");
    } catch (const std::exception& error) {
      std::puts(error.what());
    }
  }
}

void ChangeForEver(const std::string& name) {
  const Operation& operation = FindOperation(name);
  TidyUp(operation);
  std::puts("ready");
  for (unsigned turn = 1;; ++turn) operation.step(turn);
}

}  // namespace orv::soak
