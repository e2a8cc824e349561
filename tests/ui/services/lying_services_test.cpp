// Services that lie or throw while they are listed, configured and removed: the dialog stays usable and closes.
#include <gtest/gtest.h>

#include "orv/orvbase.hpp"
#include "platform/com_object.h"
#include "tests/ui/services/services_fixture.h"
#include "ui/services/provider_dialogs.h"

namespace orv::test {
namespace {

// Its texts are null, and saving throws.
class LyingSection final : public sdk::RefusingProp<IProfSect, IMAPIProp> {
 public:
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray, ULONG, ULONG* count, LPSPropValue* values) override {
    EXPECT_EQ(OrvAllocateBuffer(2 * sizeof(SPropValue), reinterpret_cast<void**>(values)), S_OK);
    const SPropValue given[] = {{PR_DISPLAY_NAME_W, 0, {}}, {PR_ORV_BOOK_FILE_W, 0, {}}};
    *count = 2;
    std::copy_n(given, *count, *values);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override { throw 7; }
};

// One row without values, then the end.
class LyingTable final : public sdk::RefusingTable {
 public:
  ORV_REFUSE(SetColumns, S_OK, LPSPropTagArray, ULONG)
  ORV_REFUSE(SeekRow, S_OK, BOOKMARK, LONG, LONG*)
  HRESULT STDMETHODCALLTYPE QueryRows(LONG, ULONG, LPSRowSet* rows) override {
    *rows = nullptr;
    if (std::exchange(isRead_, true)) return S_OK;
    EXPECT_EQ(OrvAllocateBuffer(CbNewSRowSet(1), reinterpret_cast<void**>(rows)), S_OK);
    (*rows)->cRows = 1;
    (*rows)->aRow[0] = {0, 3, nullptr};
    return S_OK;
  }

 private:
  bool isRead_ = false;
};

// What is not spoilt is answered by the profile's own administration.
class LyingServices final : public ComObject<IABServiceAdmin> {
 public:
  explicit LyingServices(ComPtr<IABServiceAdmin> real) : real_(std::move(real)) {}

  std::function<HRESULT(LPMAPITABLE*)> table;
  std::function<HRESULT(LPPROFSECT*)> section;
  std::function<HRESULT()> remove;

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMsgServiceTable(ULONG flags, LPMAPITABLE* out) override {
    return table ? table(out) : real_->GetMsgServiceTable(flags, out);
  }
  HRESULT STDMETHODCALLTYPE CreateMsgService(LPCWSTR, LPCWSTR, LPCWSTR, ULONG, ULONG_PTR, ULONG) override {
    throw 7;
  }
  HRESULT STDMETHODCALLTYPE DeleteMsgService(const MAPIUID*) override { return remove(); }
  HRESULT STDMETHODCALLTYPE ConfigureMsgService(const MAPIUID*, ULONG_PTR, ULONG, ULONG, LPSPropValue,
                                                LPPROFSECT* out) override {
    return section(out);
  }
  HRESULT STDMETHODCALLTYPE OpenProfileSection(const MAPIUID*, LPCIID, ULONG, LPPROFSECT* out) override {
    return section(out);
  }

 private:
  bool Supports(REFIID) const override { return false; }
  ComPtr<IABServiceAdmin> real_;
};

class LyingServicesTest : public ServicesFixture {
 protected:
  LyingServicesTest() {
    MakeProfile({"a", "b"});
    liar_ = ComPtr<LyingServices>::Adopt(new LyingServices(Services()));
  }

  // Shows the profile dialog over the liar; whatever the script did, OK ends it.
  void Run(const std::function<void(DialogScript& script, HWND dialog)>& act) {
    DialogDriver driver([&](DialogScript& script) {
      const HWND dialog = script.NextDialog();
      act(script, dialog);
      script.WaitEnabled(dialog);
      script.Close(dialog, IDOK);
    });
    EXPECT_EQ(ui::ShowProfileDialog(nullptr, Resources(), liar_.Get()), IDOK);
  }

  ComPtr<LyingServices> liar_;
};

TEST_F(LyingServicesTest, SectionsInConfiguring) {
  const std::function<HRESULT(LPPROFSECT*)> answers[] = {
      [](LPPROFSECT* section) { return *section = nullptr, S_OK; }, [](LPPROFSECT*) -> HRESULT { throw 7; },
      [](LPPROFSECT* section) { return *section = new LyingSection, S_OK; }};
  for (const auto& answer : answers) {
    liar_->section = answer;
    Run([&](DialogScript& script, HWND dialog) {
      const Lines before = script.Items(dialog, kList);
      script.Press(dialog, kConfigure);
      EXPECT_EQ(script.Items(dialog, kList), before) << &answer - answers;
    });
  }
  EXPECT_FALSE(KeyExists(std::wstring(kProfiles) + L"\\WAB"));
}

// What nobody can tell whether it is used is not uninstalled.
TEST_F(LyingServicesTest, TablesInListing) {
  for (const bool isGiven : {false, true}) {
    liar_->table = [=](LPMAPITABLE* table) { return *table = isGiven ? new LyingTable : nullptr, S_OK; };
    Run([&](DialogScript& script, HWND dialog) {
      EXPECT_EQ(script.Items(dialog, kList), isGiven ? Lines{L""} : Lines{});
      const HWND add = OpenAdd(script, dialog, 0);
      script.PostPress(add, kUninstall);
      ExpectBox(script, isGiven ? 280 : 0, IDNO);
      script.WaitEnabled(add);
      script.Close(add, IDCANCEL);
    });
  }
  EXPECT_EQ(CatalogueValue(L"Services", L"a"), L"a offered");
}

TEST_F(LyingServicesTest, RemovingAndAdding) {
  const std::pair<std::function<HRESULT()>, UINT> cases[] = {
      {[]() -> HRESULT { throw 7; }, 0}, {[]() -> HRESULT { throw std::bad_alloc(); }, 273}};
  for (const auto& [remove, message] : cases) {
    liar_->remove = remove;
    Run([&, box = message](DialogScript& script, HWND dialog) {
      script.PostPress(dialog, kRemove);
      ExpectBox(script, box);
      script.Send(dialog, WM_NULL);
      WaitLines(script, dialog, 2);
      script.Close(OpenAdd(script, dialog, 0), IDOK);
      ExpectBox(script, 270);
    });
  }
}

}  // namespace
}  // namespace orv::test
