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

class LyingServices final : public ComObject<IABServiceAdmin> {
 public:
  bool hasTable = true;
  std::function<HRESULT(LPPROFSECT*)> section;

  ORV_REFUSE(GetLastError, S_OK, HRESULT, ULONG, LPMAPIERROR*)
  HRESULT STDMETHODCALLTYPE GetMsgServiceTable(ULONG, LPMAPITABLE* out) override {
    return *out = hasTable ? new LyingTable : nullptr, S_OK;
  }
  HRESULT STDMETHODCALLTYPE CreateMsgService(LPCWSTR, LPCWSTR, LPCWSTR, ULONG, ULONG_PTR, ULONG) override {
    throw 7;
  }
  HRESULT STDMETHODCALLTYPE DeleteMsgService(const MAPIUID*) override { throw std::bad_alloc(); }
  HRESULT STDMETHODCALLTYPE ConfigureMsgService(const MAPIUID*, ULONG_PTR, ULONG, ULONG, LPSPropValue,
                                                LPPROFSECT* out) override {
    return section(out);
  }
  HRESULT STDMETHODCALLTYPE OpenProfileSection(const MAPIUID*, LPCIID, ULONG, LPPROFSECT* out) override {
    return section(out);
  }

 private:
  bool Supports(REFIID) const override { return false; }
};

TEST_F(ServicesFixture, ServicesThatLieLeaveEveryCommandUsable) {
  MakeProfile({"a", "b"});
  const struct {
    bool hasTable;
    std::function<HRESULT(LPPROFSECT*)> section;
  } cases[] = {{false, nullptr},
               {true, [](LPPROFSECT* section) { return *section = nullptr, S_OK; }},
               {true, [](LPPROFSECT*) -> HRESULT { throw 7; }},
               {true, [](LPPROFSECT* section) { return *section = new LyingSection, S_OK; }}};
  for (const auto& c : cases) {
    const auto liar = ComPtr<LyingServices>::Adopt(new LyingServices);
    liar->hasTable = c.hasTable;
    liar->section = c.section;
    const Lines lines(c.hasTable ? 1 : 0);  // without names
    DialogDriver driver([&](DialogScript& script) {
      const HWND dialog = script.NextDialog();
      EXPECT_EQ(script.Items(dialog, kList), lines);
      script.Press(dialog, kConfigure);
      script.PostPress(dialog, kRemove);
      ExpectBox(script, c.hasTable ? 273 : 0);
      script.WaitEnabled(dialog);
      EXPECT_EQ(script.Items(dialog, kList), lines);
      const HWND add = OpenAdd(script, dialog, 0);
      script.PostPress(add, kUninstall);
      ExpectBox(script, c.hasTable ? 280 : 0, IDNO);  // what nobody can tell is not uninstalled
      script.WaitEnabled(add);
      script.Close(add, IDOK);
      ExpectBox(script, 270);
      script.WaitEnabled(dialog);
      script.Close(dialog, IDOK);
    });
    EXPECT_EQ(ui::ShowProfileDialog(nullptr, Resources(), liar.Get()), IDOK);
  }
  EXPECT_FALSE(KeyExists(std::wstring(kProfiles) + L"\\WAB"));
  EXPECT_EQ(CatalogueValue(L"Services", L"a"), L"a offered");
}

}  // namespace
}  // namespace orv::test
