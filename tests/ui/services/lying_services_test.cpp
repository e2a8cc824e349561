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

HRESULT Give(ULONG* count, LPSPropValue* values, std::initializer_list<SPropValue> given) {
  *count = static_cast<ULONG>(given.size());
  void* buffer = nullptr;
  EXPECT_EQ(OrvAllocateBuffer(static_cast<ULONG>(given.size() * sizeof(SPropValue)), &buffer), S_OK);
  *values = std::copy(given.begin(), given.end(), static_cast<SPropValue*>(buffer)) - given.size();
  return S_OK;
}

HRESULT GiveRows(LPSRowSet* rows, ULONG count, const SRow& row) {
  void* buffer = nullptr;
  EXPECT_EQ(OrvAllocateBuffer(CbNewSRowSet(1), &buffer), S_OK);
  *rows = static_cast<LPSRowSet>(buffer);
  (*rows)->cRows = count;
  (*rows)->aRow[0] = row;
  return S_OK;
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
  const auto text = [](ULONG tag) {
    SPropValue value{};
    value.ulPropTag = tag;
    return value;
  };
  const LyingSection::Answer answers[] = {
      [](ULONG* count, LPSPropValue* values) { return *count = 3, *values = nullptr, S_OK; },
      [](ULONG* count, LPSPropValue* values) { return Give(count, values, {}); },
      [&](ULONG* count, LPSPropValue* values) {
        return Give(count, values, {text(PR_DISPLAY_NAME_W), text(PR_ORV_BOOK_FILE_W)});
      },
      [&](ULONG* count, LPSPropValue* values) {
        return Give(count, values, {text(CHANGE_PROP_TYPE(PR_DISPLAY_NAME_W, PT_ERROR))});
      },
      [](ULONG*, LPSPropValue* values) {
        *values = reinterpret_cast<LPSPropValue>(1);  // a failure hands out nothing, whatever it wrote
        return MAPI_E_CALL_FAILED;
      },
      [](ULONG*, LPSPropValue*) -> HRESULT { throw 7; },
      [](ULONG*, LPSPropValue*) -> HRESULT { throw std::bad_alloc(); }};
  for (const auto& answer : answers) {
    liar_->section = [&](LPPROFSECT* section) { return *section = new LyingSection(answer), S_OK; };
    Run([&](DialogScript& script, HWND dialog) {
      const Lines before = script.Items(dialog, kList);
      script.Press(dialog, kConfigure);
      EXPECT_EQ(script.Items(dialog, kList), before) << &answer - answers;
    });
  }
  EXPECT_FALSE(KeyExists(std::wstring(kProfiles) + L"\\WAB"));
}

TEST_F(LyingServicesTest, NoSectionAtAll) {
  const std::function<HRESULT(LPPROFSECT*)> answers[] = {
      [](LPPROFSECT* section) { return *section = nullptr, S_OK; },
      [](LPPROFSECT*) { return MAPI_E_NOT_FOUND; },
      [](LPPROFSECT*) -> HRESULT { throw 7; },
  };
  for (const auto& answer : answers) {
    liar_->section = answer;
    Run([&](DialogScript& script, HWND dialog) {
      script.Press(dialog, kConfigure);
      EXPECT_EQ(script.Items(dialog, kList).size(), 2u) << &answer - answers;
    });
  }
}

TEST_F(LyingServicesTest, TablesInListing) {
  const struct {
    LyingTable::Answer answer;  // none: success without a table
    Lines lines;
    bool isUnused;  // what nobody can tell is not uninstalled
  } cases[] = {
      {nullptr, {}, false},
      {[](LPSRowSet*) { return S_OK; }, {}, true},
      {[](LPSRowSet*) { return MAPI_E_CALL_FAILED; }, {}, false},
      {[](LPSRowSet*) -> HRESULT { throw 7; }, {}, false},
      {[](LPSRowSet* rows) {
         return GiveRows(rows, 1, {0, 0, nullptr});
       },
       {L""},
       true},
      {[](LPSRowSet* rows) {
         return GiveRows(rows, 1, {0, 3, nullptr});
       },
       {L""},
       true},
      {[](LPSRowSet* rows) { return GiveRows(rows, 0, {}); }, {}, true},
  };
  for (const auto& c : cases) {
    liar_->table = [&](LPMAPITABLE* table) {
      return *table = c.answer ? new LyingTable(c.answer) : nullptr, S_OK;
    };
    Run([&](DialogScript& script, HWND dialog) {
      EXPECT_EQ(script.Items(dialog, kList), c.lines) << &c - cases;
      const HWND add = OpenAdd(script, dialog, 0);
      script.PostPress(add, kUninstall);
      if (c.isUnused) {
        EXPECT_EQ(script.AnswerBox(IDNO), Message(280));
      }
      script.WaitEnabled(add);
      script.Close(add, IDCANCEL);
    });
  }
  EXPECT_EQ(CatalogueValue(L"Services", L"a"), L"a offered");
}

TEST_F(LyingServicesTest, RemovingAndAdding) {
  const struct {
    std::function<HRESULT()> remove;
    UINT message;  // 0: none
  } cases[] = {{[] { return MAPI_E_CALL_FAILED; }, 0},
               {[]() -> HRESULT { throw 7; }, 0},
               {[]() -> HRESULT { throw std::bad_alloc(); }, 273}};
  for (const auto& c : cases) {
    liar_->remove = c.remove;
    Run([&](DialogScript& script, HWND dialog) {
      script.PostPress(dialog, kRemove);
      if (c.message != 0) {
        EXPECT_EQ(script.AnswerBox(IDOK), Message(c.message));
      }
      script.Send(dialog, WM_NULL);
      WaitLines(script, dialog, 2);
      script.Close(OpenAdd(script, dialog, 0), IDOK);
      EXPECT_EQ(script.AnswerBox(IDOK), Message(270));
    });
  }
}

}  // namespace
}  // namespace orv::test
