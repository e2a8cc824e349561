// Random changes of what is stored, each undone before the next: any answer is right, as long as there is one, and what
// was not changed is still there.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>

#include "soak/library.h"

namespace orv::soak {
namespace {

using Random = std::mt19937;
using Bytes = std::vector<BYTE>;

unsigned Below(Random& random, size_t end) { return end == 0 ? 0 : static_cast<unsigned>(random() % end); }

const WString kProfileKey = WString(kModelKey) + L"\\Orv Profiles\\" + kBase;
const WString kUndoKey = WString(kModelKey) + L"\\Orv Undo\\" + kBase;
constexpr const WCHAR* kCopy = L"soak copy";

struct Value {
  WString key, name;
  DWORD type = REG_BINARY;
  Bytes data;

  void Write() const {
    RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), name.c_str(), type, data.data(),
                    static_cast<DWORD>(data.size()));
  }
  bool IsStored() const {
    Bytes found(data.size() + 1);
    DWORD size = static_cast<DWORD>(found.size()), foundType = 0;
    const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, key.c_str(), name.c_str(), RRF_RT_ANY, &foundType,
                                        found.data(), &size);
    found.resize(size);
    return status == ERROR_SUCCESS && foundType == type && found == data;
  }
};

void ReadValues(const WString& path, std::vector<Value>& values) {
  HKEY key = nullptr;
  Require(RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS,
          "a key is missing");
  WCHAR name[256];
  DWORD length = 256, size = 0;
  for (DWORD i = 0;
       RegEnumValueW(key, i, name, &(length = 256), nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS; ++i) {
    Value& value = values.emplace_back(Value{path, name, REG_BINARY, Bytes(size)});
    RegQueryValueExW(key, name, nullptr, &value.type, value.data.data(), &size);
  }
  for (DWORD i = 0;
       RegEnumKeyExW(key, i, name, &(length = 256), nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; ++i)
    ReadValues(path + L"\\" + name, values);
  RegCloseKey(key);
}

Bytes Junk(Random& random, size_t size) {
  Bytes junk(size);
  for (BYTE& byte : junk) byte = static_cast<BYTE>(random());
  return junk;
}

// Bytes changed, taken away, put in or doubled; counts and lengths set to what they must never be.
void ChangeBytes(Random& random, Bytes& data) {
  const unsigned at = Below(random, data.size());
  const auto place = data.begin() + at;
  switch (random() % 6) {
    case 0:
      if (!data.empty()) *place ^= static_cast<BYTE>(1 << random() % 8);
      break;
    case 1:
      data.resize(at);
      break;
    case 2:
      data.insert(place, random() % 64, static_cast<BYTE>(random()));
      break;
    case 3:
      data = Junk(random, data.size());
      break;
    case 4:
      data.insert(data.end(), data.begin(), data.begin() + at);
      break;
    default:
      constexpr DWORD kBad[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0x20000001};
      if (data.size() >= 4) std::memcpy(&data[(at & ~3U) % (data.size() - 3)], &kBad[random() % 6], 4);
  }
}

void ChangeRegistry(Random& random, Value value) {
  switch (random() % 8) {
    case 0:
      RegDeleteKeyValueW(HKEY_CURRENT_USER, value.key.c_str(), value.name.c_str());
      return;
    case 1:
      value.type = random() % 12;
      break;
    case 2:
      value.name = std::to_wstring(random());
      break;
    case 3:
      value.key += L"\\" + std::to_wstring(random());
      break;
    case 4:
      value = {kUndoKey, L"Record", REG_BINARY, Junk(random, random() % 200)};
      break;
    default:
      ChangeBytes(random, value.data);
  }
  value.Write();
}

template <class Step>
void Try(Step step) {
  try {
    step();
  } catch (const std::runtime_error&) {
  }
}

void ReadEverything() {
  Try([] { ReadStored(kBase); });
  Try([] {
    const auto session = LogOn(kBase);
    ULONG size = 0;
    auto id = TheLibrary().allocator.Own<ENTRYID>();
    BookOf(session)->GetDefaultDir(&size, id.Put());
  });
  Try([] { RequireOneGeneration(kBase, ReadStored(kBase).begin()->first); });
}

void ChangeEverything() {
  Try([] {
    const auto services = ServicesOf(kBase);
    const Uid uid = AddService(services.Get(), kNamed, L"damage");
    Check(services->DeleteMsgService(AsUid(uid)), "DeleteMsgService");
  });
  Try([] { Check(Profiles()->CopyProfile(kBase, kCopy, MAPI_UNICODE), "CopyProfile"); });
  Try([] { DeleteProfile(kCopy); });
}

// The settings in the profile's own key are mended at logon.
void RequireOthers(const std::vector<Value>& values, const Value& changed) {
  for (const Value& value : values) {
    if (value.key != changed.key && value.key != kProfileKey)
      Require(value.IsStored(), "lost: a value is gone");
  }
}

void Restore(const std::vector<Value>& values) {
  RegDeleteTreeW(HKEY_CURRENT_USER, kProfileKey.c_str());
  RegDeleteTreeW(HKEY_CURRENT_USER, kUndoKey.c_str());
  for (const Value& value : values) value.Write();
}

class RegistryDamage {
 public:
  RegistryDamage() { ReadValues(kProfileKey, values_); }
  void Change(Random& random) const {
    const Value& value = values_[Below(random, values_.size())];
    ChangeRegistry(random, value);
    ReadEverything();
    ChangeEverything();
    RequireOthers(values_, value);
  }
  void Undo() const { Restore(values_); }

 private:
  std::vector<Value> values_;
};

class CatalogueDamage {
 public:
  CatalogueDamage() {
    std::ifstream file(path_, std::ios::binary);
    whole_.assign(std::istreambuf_iterator<char>(file), {});
  }
  void Change(Random& random) const {
    Bytes bytes(whole_);
    for (unsigned changes = 1 + random() % 4; changes != 0; --changes) ChangeBytes(random, bytes);
    Write(bytes);
    Try([] {
      Check(Profiles()->CreateProfile(kCopy, 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES), "CreateProfile");
    });
    Try([] { LogOn(kCopy); });
    ChangeEverything();
  }
  void Undo() const { Write(whole_); }

 private:
  void Write(const Bytes& bytes) const {
    std::ofstream file(path_, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  const std::string path_ = [] {
    const WString wide = PathBeside(L"XHTASVB.ini");
    return std::string(wide.begin(), wide.end());
  }();
  Bytes whole_;
};

template <class Damage>
void Run(unsigned seed, unsigned first, unsigned end) {
  const Damage damage;
  const Stored expected = ReadStored(kBase);
  for (unsigned number = first; number < end; ++number) {
    std::printf("at %u\n", number);
    Random random(seed * 100000 + number);
    try {
      damage.Change(random);
    } catch (const std::exception& error) {
      std::printf("unexpected change %u: %s\n", number, error.what());
    }
    damage.Undo();
    if (ReadStored(kBase) != expected) std::printf("unexpected change %u: cannot be undone\n", number);
  }
  std::printf("done %u\n", end - first);
}

}  // namespace

void RunDamage(const std::string& what, unsigned seed, unsigned first, unsigned end) {
  what == "registry" ? Run<RegistryDamage>(seed, first, end) : Run<CatalogueDamage>(seed, first, end);
}

}  // namespace orv::soak
