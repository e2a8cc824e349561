// The service meets a support object and a section of ours. The section holds what is stored of the service and takes
// changes, which end with the process.
#include "tools/orvctl/lone_logon.h"

#include "diag/names.h"
#include "orv/orvbook.h"
#include "tools/orvctl/book_copies.h"
#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/lone_objects.h"
#include "tools/orvctl/service_trial.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

using Status = TrialStep::Status;

struct FreeModule {
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
using ProviderModule = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeModule>;

class LoneLogon {
 public:
  LoneLogon(const Json& arguments, HostLink& link)
      : library_(arguments.value("library", "")),
        profile_(arguments.value("profile", "")),
        uid_(FromHex(arguments.value("uid", "")).value_or(Bytes())),
        name_(arguments.value("provider", "")),
        link_(link) {}
  // Last of all the library: what it made is gone by then.
  ~LoneLogon() {
    link_.Step("releasing the provider");
    provider_.Reset();
    link_.Step("freeing " + name_);
  }
  LoneLogon(const LoneLogon&) = delete;
  LoneLogon& operator=(const LoneLogon&) = delete;

  void Run() { Load() && LogOn() && ListContainers() && LookAtBooks(); }

 private:
  bool Tell(const char* check, Status status, HRESULT result, std::string detail, std::string fix = {}) {
    link_.Send({{"check", check},
                {"status", static_cast<int>(status)},
                {"code", status == Status::kOk ? "" : diag::ResultName(static_cast<uint32_t>(result))},
                {"detail", std::move(detail)},
                {"fix", std::move(fix)}});
    return status != Status::kError;
  }
  // Of a call of the provider's that failed.
  bool Refused(const char* check, HRESULT result, const char* call) {
    return Tell(check, Status::kError, result, "its provider fails in " + std::string(call),
                "look at what the service needs: its settings, its file, its server");
  }
  // The provider's code: what it throws is told as such.
  template <class Function>
  bool Call(const char* check, const char* name, Function function, HRESULT* result) {
    link_.Step("calling " + std::string(name));
    try {
      *result = function();
      return true;
    } catch (...) {
    }
    return Tell(check, Status::kError, MAPI_E_CALL_FAILED,
                "its provider raises an exception in " + std::string(name),
                "have the provider's maker look at it");
  }

  bool Load() {
    const WideString path = OwnFolder() + ToWide(name_);
    link_.Step("loading " + name_);
    module_.reset(LoadAsProvider(path));
    const DWORD error = module_ ? ERROR_SUCCESS : GetLastError();
    if (module_) return true;
    link_.Send({{"check", "load"},
                {"status", static_cast<int>(Status::kError)},
                {"code", diag::SystemErrorName(error)},
                {"detail", "its library cannot be loaded: " + DescribeLoadError(error, path)},
                {"fix", "install " + name_ + " again"}});
    return false;
  }

  bool LogOn() {
    link_.Step("reading the service's settings");
    section_ = CopySection(library_, profile_, uid_);
    support_.reset(new LoneSupport(library_.buffers(), [this](HRESULT code, const std::string& text) {
      Tell("logon", Status::kWarning, code, "it reports: " + text);
    }));
    const auto open = reinterpret_cast<LPABPROVIDEROPEN>(
        reinterpret_cast<void*>(GetProcAddress(module_.get(), ORV_PROVIDER_OPEN_NAME)));
    HRESULT result = S_OK;
    const auto& buffers = library_.buffers();
    const bool isCalled = Call(
        "logon", ORV_PROVIDER_OPEN_NAME,
        [&] {
          return open(nullptr, support_.get(), section_.Get(), 0, MAPI_UNICODE, buffers.root, buffers.more,
                      buffers.free, provider_.Put(), 0);
        },
        &result);
    if (!isCalled || FAILED(result)) static_cast<void>(provider_.Detach());
    if (!isCalled) return false;
    if (FAILED(result)) return Refused("logon", result, ORV_PROVIDER_OPEN_NAME);
    if (!provider_)
      return Tell("logon", Status::kWarning, MAPI_E_NOT_FOUND,
                  "it logs on without an object, and so with no entries") &&
             false;
    if (support_->Uids().empty())
      return Tell("logon", Status::kError, MAPI_E_NOT_FOUND,
                  "its provider registers no MAPIUID, so none of its entries can be opened",
                  "have the provider's maker call SetProviderUID");
    return Tell("logon", Status::kOk, S_OK, "logged on alone");
  }

  bool ListContainers() {
    containers_ = {ReadOwnId()};
    if (containers_.front().size() < ORV_MIN_ENTRYID)
      return Tell("containers", Status::kError, MAPI_E_NOT_FOUND,
                  "its provider's row has no usable PR_ENTRYID", "have the provider's maker look at it");
    ComPtr<IMAPIContainer> root;
    const HRESULT opened = OpenContainer(containers_.front(), root);
    if (!root) return Refused("containers", opened, "OpenEntry of its own container");
    ComPtr<IMAPITable> table;
    HRESULT result = S_OK;
    const bool isCalled = Call(
        "containers", "GetHierarchyTable",
        [&] { return root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()); }, &result);
    if (!isCalled || FAILED(result)) static_cast<void>(table.Detach());
    if (!isCalled) return false;
    if (result == MAPI_E_NO_SUPPORT) return Tell("containers", Status::kOk, S_OK, "its own");
    if (FAILED(result) || !table)
      return Refused("containers", FAILED(result) ? result : MAPI_E_CALL_FAILED, "GetHierarchyTable");
    ReadHierarchy(table.Get());
    return Tell("containers", Status::kOk, S_OK,
                "its own and " + std::to_string(containers_.size() - 1) + " below it");
  }

  Bytes ReadOwnId() {
    TagArray columns{PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH};
    link_.Step("calling GetProps");
    const Properties row(library_, provider_.Get(), columns.Get(), "read the provider's own row");
    return BytesOf(row.view(), PR_ENTRYID);
  }

  // The result is a failure whenever no container comes of it.
  HRESULT OpenContainer(Bytes id, ComPtr<IMAPIContainer>& container) {
    ULONG type = 0;
    ComPtr<IUnknown> opened;
    HRESULT result = MAPI_E_CALL_FAILED;
    auto* const entry = reinterpret_cast<ENTRYID*>(id.data());
    const auto open = [&] {
      return provider_->OpenEntry(static_cast<ULONG>(id.size()), entry, nullptr, 0, &type, opened.Put());
    };
    const bool isCalled = Call("containers", "OpenEntry", open, &result);
    if (!isCalled || FAILED(result)) static_cast<void>(opened.Detach());
    if (opened) container = opened.As<IMAPIContainer>();
    return container || FAILED(result) ? result : MAPI_E_INVALID_OBJECT;
  }

  void ReadHierarchy(IMAPITable* table) {
    link_.Step("reading the hierarchy");
    TagArray columns{PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH};
    ForEachRow(library_, table, columns.Get(), "list its containers", [&](const ValueView& row) {
      containers_.push_back(BytesOf(row, PR_ENTRYID));
      return true;
    });
  }

  // A container whose file cannot be read opens all the same, as an empty one, and says so in its properties.
  bool LookAtBooks() {
    if (containers_.size() > kMostBooks) {
      containers_.resize(kMostBooks);
      Tell("book", Status::kWarning, MAPI_E_TOO_BIG,
           "only its first " + std::to_string(kMostBooks) + " containers were looked at");
    }
    for (const Bytes& id : containers_) {
      ComPtr<IMAPIContainer> container;
      if (id.size() >= ORV_MIN_ENTRYID && SUCCEEDED(OpenContainer(id, container)))
        LookAtBook(container.Get());
    }
    return true;
  }

  void LookAtBook(IMAPIContainer* container) {
    TagArray tags{PR_ORV_BOOK_STATUS, PR_ORV_SKIPPED_RECORDS, PR_ORV_BOOK_FILE_W};
    link_.Step("calling GetProps of a container");
    const Properties properties(library_, container, tags.Get(), "read how its container's file was read");
    const ValueView values = properties.view();
    const std::string file = TextOf(values, PR_ORV_BOOK_FILE_W);
    const std::string book = "its book" + (file.empty() ? "" : " " + file);
    const auto status = static_cast<HRESULT>(values.Number(PR_ORV_BOOK_STATUS));
    const ULONG skipped = values.Number(PR_ORV_SKIPPED_RECORDS);
    if (FAILED(status)) {
      Tell("book", Status::kError, status, book + " cannot be read",
           WithWayBack(WayOn(status, file), status, file));
    } else if (skipped != 0) {
      Tell("book", Status::kWarning, MAPI_W_PARTIAL_COMPLETION,
           std::to_string(skipped) + " records of " + book + " cannot be read",
           "correct the records, or take them out of the file");
    } else if (!file.empty()) {
      LookThrough(container, book, file);
    }
  }

  // A book that tells how it is says more than how it was opened.
  void LookThrough(IMAPIContainer* container, const std::string& book, const std::string& file) {
    link_.Step("looking through its book");
    ComPtr<IOrvContacts> contacts;
    const HRESULT opened =
        container->OpenProperty(PR_ORV_CONTACTS, &IID_IOrvContacts, 0, 0, contacts.PutUnknown());
    OrvBookHealth health = {};
    health.cbSize = sizeof(health);
    const bool isTold = SUCCEEDED(opened) && contacts && SUCCEEDED(contacts->GetHealth(FALSE, &health));
    if (FAILED(opened)) static_cast<void>(contacts.Detach());
    const bool isWhole = !isTold || (SUCCEEDED(health.hrStatus) && health.cDamaged == 0);
    if (isWhole) {
      Tell("book", Status::kOk, S_OK, book + " is read" + (isTold ? Figures(health) : ""));
      return;
    }
    const HRESULT code = FAILED(health.hrStatus) ? health.hrStatus : MAPI_W_PARTIAL_COMPLETION;
    Tell("book", Status::kError, code,
         book + " is damaged: " + ToUtf8(static_cast<const WCHAR*>(health.szText)),
         WithWayBack(RepairOf(file), MAPI_E_CORRUPT_STORE, file));
  }

  static std::string RepairOf(const std::string& file) {
    return "'orvctl book repair \"" + file + "\" NEW' writes what can be read into a new file";
  }

  std::string WayOn(HRESULT status, const std::string& file) const {
    const std::string other = "'orvctl service set \"" + profile_ + "\" " + ToHex(uid_) + " --config PATH'";
    if (status != MAPI_E_CORRUPT_STORE || file.empty()) return "put the file back or " + other;
    return RepairOf(file) + "; " + other + " then names that";
  }

  static std::string Figures(const OrvBookHealth& health) {
    return ": " + std::to_string(health.cEntries) + " entries, " + std::to_string(health.cLists) +
           " of them lists, " + std::to_string(health.cDeleted) + " can be restored";
  }

  // Opening them takes time, of which a trial has little.
  static constexpr size_t kMostBooks = 100;

  const Library library_;
  const std::string profile_;
  const Bytes uid_;
  const std::string name_;
  HostLink& link_;
  ProviderModule module_;
  ComPtr<IProfSect> section_;
  orv::sdk::Owned<LoneSupport> support_;
  ComPtr<IAddrBook> provider_;
  std::vector<Bytes> containers_;  // its own first
};

}  // namespace

// What a table or an answer of the provider's is refused for is said by whoever reads it.
void LogOnAlone(const Json& arguments, HostLink& link) {
  LoneLogon logon(arguments, link);
  try {
    logon.Run();
  } catch (const CommandError& error) {
    const auto code = static_cast<uint32_t>(error.result().value_or(MAPI_E_CALL_FAILED));
    link.Send({{"check", "containers"},
               {"status", static_cast<int>(Status::kError)},
               {"code", diag::ResultName(code)},
               {"detail", error.what()},
               {"fix", "have the provider's maker look at it"}});
  }
}

}  // namespace orvctl
