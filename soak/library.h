// The delivered library, loaded beside this program, and what every mode asks of it.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

#include "orv/orvbase.hpp"
#include "platform/win.h"

namespace orv::soak {

using sdk::ComPtr;
using sdk::ValueView;

using Uid = std::array<BYTE, sizeof(MAPIUID)>;
inline const MAPIUID* AsUid(const Uid& uid) { return reinterpret_cast<const MAPIUID*>(uid.data()); }

// A call that failed where none may.
struct Failed : std::runtime_error {
  Failed(const std::string& what, HRESULT code);
};
void Check(HRESULT result, const char* what);
// What must hold of what was read.
void Require(bool holds, const std::string& what);

struct Exports {
  LPORVOPEN open;
  LPORVADMINPROFILES adminProfiles;
  LPORVADDRESS address;
  sdk::Allocator allocator;
};
const Exports& TheLibrary();

ComPtr<IOrvProfAdmin> Profiles();
ComPtr<IABServiceAdmin> ServicesOf(const WString& profile);
ComPtr<IOrvSession> LogOn(const WString& profile);
ComPtr<IAddrBook> BookOf(const ComPtr<IOrvSession>& session);
ComPtr<IProfSect> SectionOf(IABServiceAdmin* services, const Uid& uid);

// All containers, at whatever depth.
ComPtr<IMAPITable> HierarchyOf(IAddrBook* book);
// The Address dialog, which somebody has to cancel.
void ShowAddressDialog(IAddrBook* book);

void ForEachRow(IMAPITable* table, LPSPropTagArray columns, const std::function<void(const ValueView&)>& use);
bool HasProfile(const WString& name);
// Whether or not it is there.
void DeleteProfile(const WString& name);

// The stored services with the number of columns that each has; a row that cannot be read fails.
using Stored = std::map<Uid, int>;
Stored ReadStored(const WString& profile);

// Adds a service of the catalogue under a display name, by which its UID is found.
Uid AddService(IABServiceAdmin* services, const WCHAR* service, const WString& displayName);

// The same text in each of these properties of a section, so that halves of two savings can be told.
inline constexpr ULONG kTexts = 8;
void WriteTexts(IMAPIProp* section, unsigned generation);
std::vector<SPropValue> TextValues(WString& text);
void RequireOneGeneration(const WString& profile, const Uid& uid);

// Profiles, catalogue entries and files of the installation; scripts/soak.py lays the files.
inline constexpr const WCHAR* kBase = L"soak base";
inline constexpr const WCHAR* kSmall = L"soak small";  // one service
inline constexpr const WCHAR* kContacts = L"ContactFile";
inline constexpr const WCHAR* kNamed = L"Named";
inline constexpr const WCHAR* kBusy = L"Busy";
inline constexpr const WCHAR* kModelKey = L"Software\\Tovan\\Velmora\\VX200 series";
WString PathBeside(const WString& file);

// Prints how much more the process holds than `Mark` found, and how much was done meanwhile.
class Growth {
 public:
  // Windows, menus, icons and drawing objects are counted as well, which takes its time.
  explicit Growth(bool countsWindows) : countsWindows_(countsWindows) {}
  using Counts = std::map<std::string, long long>;

  void Mark();
  // What has been added since.
  Counts Since() const;
  // The same without what is `allowed`; answers what it printed.
  Counts Print(unsigned done, const Counts& allowed = {}) const;

 private:
  Counts Count() const;

  bool countsWindows_;
  Counts marked_;
};

// What a batch leaves may be a lock that was fought over for the first time, or a group of blocks that a heap keeps for
// the next; a leak shows in every batch. So there are two, and more only while something has grown in each of them.
// `batch` answers how much it did.
void RunBatches(bool countsWindows, const Growth::Counts& allowed, const std::function<unsigned()>& batch);

// Shows a template of a library beside this program by the platform alone until it is cancelled: what is kept of a window
// then is not ours.
inline constexpr const WCHAR* kCompanion = L"XHTFCBUS.dll";
inline constexpr WORD kAddressDialog = 260;
void ShowBare(const WCHAR* library, WORD dialog);

// The modes; each prints "KEY VALUE" lines. Failures leave as exceptions.
void ServeChecks();                                // changes.cpp
void ChangeForEver(const std::string& operation);  // changes.cpp
void RunMember(unsigned number, unsigned seconds);
void RunThreads(const std::string& subject, unsigned seconds);
void RunRepeats(const std::string& what, unsigned times);
void ShowEveryWindow(unsigned times);      // of a personal book, and the Address dialog over it
void ShowEveryBareWindow(unsigned times);  // their templates
void RunDamage(const std::string& what, unsigned seed, unsigned first, unsigned end);

}  // namespace orv::soak
