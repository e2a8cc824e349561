// Services that lie or throw while they are listed, configured and removed: the dialog stays usable and closes.
#include <gtest/gtest.h>

#include "orv/orvbase.hpp"
#include "platform/com_object.h"
#include "tests/ui/services/services_fixture.h"
#include "ui/services/provider_dialogs.h"

namespace orv::test {
namespace {

class LyingSection final : public sdk::RefusingProp<IProfSect, IMAPIProp> {
 public:
  using Answer = std::function<HRESULT(ULONG* count, LPSPropValue* values)>;
  explicit LyingSection(Answer answer) : answer_(std::move(answer)) {}

  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray, ULONG, ULONG* count, LPSPropValue* values) override {
    return answer_(count, values);
  }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override { throw 7; }

 private:
  Answer answer_;
};

class LyingTable final : public sdk::RefusingTable {
 public:
  using Answer = std::function<HRESULT(LPSRowSet* rows)>;
  explicit LyingTable(Answer answer) : answer_(std::move(answer)) {}

  HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray, ULONG) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK, LONG, LONG*) override { return S_OK; }
  // One answer, then the end.
  HRESULT STDMETHODCALLTYPE QueryRows(LONG, ULONG, LPSRowSet* rows) override {
    *rows = nullptr;
    return std::exchange(asked_, true) ? S_OK : answer_(rows);
  }

 private:
  Answer answer_;
  bool asked_ = false;
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

LyingSection::Answer Giving(std::vector<SPropValue> given) {
  return [given](ULONG* count, LPSPropValue* values) {
    *count = static_cast<ULONG>(given.size());
    const auto bytes = static_cast<ULONG>(given.size() * sizeof(SPropValue));
    EXPECT_EQ(OrvAllocateBuffer(bytes, reinterpret_cast<void**>(values)), S_OK);
    std::copy(given.begin(), given.end(), *values);
    return S_OK;
  };
}

LyingTable::Answer GivingRow(ULONG count, ULONG values) {
  return [=](LPSRowSet* rows) {
    EXPECT_EQ(OrvAllocateBuffer(CbNewSRowSet(1), reinterpret_cast<void**>(rows)), S_OK);
    (*rows)->cRows = count;
    (*rows)->aRow[0] = {0, values, nullptr};
    return S_OK;
  };
}

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
  using Section = std::function<HRESULT(LPPROFSECT*)>;
  const auto with = [](LyingSection::Answer values) -> Section {
    return [=](LPPROFSECT* section) { return *section = new LyingSection(values), S_OK; };
  };
  const SPropValue name{PR_DISPLAY_NAME_W, 0, {}}, file{PR_ORV_BOOK_FILE_W, 0, {}};
  const Section answers[] = {
      [](LPPROFSECT* section) { return *section = nullptr, S_OK; },
      [](LPPROFSECT*) { return MAPI_E_NOT_FOUND; },
      [](LPPROFSECT*) -> HRESULT { throw 7; },
      with([](ULONG* count, LPSPropValue* values) { return *count = 3, *values = nullptr, S_OK; }),
      with(Giving({})),
      with(Giving({name, file})),
      with(Giving({{CHANGE_PROP_TYPE(PR_DISPLAY_NAME_W, PT_ERROR), 0, {}}})),
      with([](ULONG*, LPSPropValue* values) {
        *values = reinterpret_cast<LPSPropValue>(1);  // a failure hands out nothing, whatever it wrote
        return MAPI_E_CALL_FAILED;
      }),
      with([](ULONG*, LPSPropValue*) -> HRESULT { throw 7; }),
      with([](ULONG*, LPSPropValue*) -> HRESULT { throw std::bad_alloc(); })};
  for (const Section& answer : answers) {
    liar_->section = answer;
    Run([&](DialogScript& script, HWND dialog) {
      const Lines before = script.Items(dialog, kList);
      script.Press(dialog, kConfigure);
      EXPECT_EQ(script.Items(dialog, kList), before) << &answer - answers;
    });
  }
  EXPECT_FALSE(KeyExists(std::wstring(kProfiles) + L"\\WAB"));
}

TEST_F(LyingServicesTest, TablesInListing) {
  const struct {
    LyingTable::Answer answer;  // none: success without a table
    Lines lines;
    bool isUnused;  // what nobody can tell is not uninstalled
  } cases[] = {{nullptr, {}, false},
               {[](LPSRowSet*) { return S_OK; }, {}, true},
               {[](LPSRowSet*) { return MAPI_E_CALL_FAILED; }, {}, false},
               {[](LPSRowSet*) -> HRESULT { throw 7; }, {}, false},
               {GivingRow(1, 0), {L""}, true},
               {GivingRow(1, 3), {L""}, true},
               {GivingRow(0, 0), {}, true}};
  for (const auto& c : cases) {
    liar_->table = [&](LPMAPITABLE* table) {
      return *table = c.answer ? new LyingTable(c.answer) : nullptr, S_OK;
    };
    Run([&](DialogScript& script, HWND dialog) {
      EXPECT_EQ(script.Items(dialog, kList), c.lines) << &c - cases;
      const HWND add = OpenAdd(script, dialog, 0);
      script.PostPress(add, kUninstall);
      ExpectBox(script, c.isUnused ? 280 : 0, IDNO);
      script.WaitEnabled(add);
      script.Close(add, IDCANCEL);
    });
  }
  EXPECT_EQ(CatalogueValue(L"Services", L"a"), L"a offered");
}

TEST_F(LyingServicesTest, RemovingAndAdding) {
  const std::pair<std::function<HRESULT()>, UINT> cases[] = {
      {[] { return MAPI_E_CALL_FAILED; }, 0},
      {[]() -> HRESULT { throw 7; }, 0},
      {[]() -> HRESULT { throw std::bad_alloc(); }, 273}};
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
