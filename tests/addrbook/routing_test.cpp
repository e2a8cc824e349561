// Who answers for an entry identifier, and with which arguments.
#include "props/entry_id.h"
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

Bytes UserInfoId(BYTE flags, std::size_t size) {
  Bytes id(kUserInfoEntryId.begin(), kUserInfoEntryId.end());
  id[0] = flags;
  id.resize(size);
  return id;
}

using Results = std::vector<HRESULT>;

class Routing : public BookTest {
 protected:
  // Advise, OpenEntry, NewEntry and Details.
  Results CallAll(Bytes& id, Bytes& container) {
    ULONG_PTR ui = 0;
    ULONG number = 77;
    const HRESULT advised = book->Advise(Size(id), Id(id), 1, &sink_, &number);
    EXPECT_EQ(number, advised == S_OK ? 1u : 0u) << "cleared before anything else";
    EXPECT_EQ(book->Unadvise(number), advised == S_OK ? S_OK : MAPI_E_NOT_FOUND);
    EXPECT_EQ(sink_.References(), 1u);
    ComPtr<IUnknown> object;
    MapiBuffer<ENTRYID> made;
    return {advised, book->OpenEntry(Size(id), Id(id), nullptr, 0, &number, object.Put()),
            book->NewEntry(0, 0, Size(container), Id(container), 0, nullptr, &number, made.Put()),
            book->Details(&ui, nullptr, nullptr, Size(id), Id(id), nullptr, nullptr, nullptr, 0)};
  }

 private:
  FakeSink sink_;
};

TEST_F(Routing, IdentifiersOfNobodyAreRefused) {
  Load("A");
  LoadObject(nullptr, 'N');
  Open();
  const std::pair<Bytes, HRESULT> cases[] = {{UserInfoId(0xFF, 20), MAPI_E_INVALID_ENTRYID},
                                             {UserInfoId(0xFF, 24), MAPI_E_NOT_FOUND},
                                             {Bytes(20, 'Z'), MAPI_E_NOT_FOUND},
                                             {Bytes(19, 'Z'), MAPI_E_INVALID_ENTRYID},
                                             {Bytes(19, 'A'), MAPI_E_INVALID_ENTRYID},
                                             {Bytes(20, 'N'), MAPI_E_NO_ACCESS},
                                             {Bytes(20, 'A'), S_OK}};
  Bytes container(20, 'A');
  for (auto [id, expected] : cases) {
    // The user's own entry concerns the address book where it is opened only.
    const HRESULT advised = id[0] == 0xFF ? MAPI_E_NOT_FOUND : expected;
    EXPECT_EQ(CallAll(id, container), (Results{advised, expected, S_OK, expected}))
        << id.size() << " of " << id.back();
  }
  EXPECT_EQ(log.Count("A.OpenEntry"), 1u);
}

TEST_F(Routing, ResultsGoThroughUnchangedAndExceptionsAreCodes) {
  constexpr HRESULT kOddResult = static_cast<HRESULT>(0x80040999);
  FakeScript& script = Load("A");
  Open();
  Bytes id = script.EntryId("user");
  const std::pair<FakeAnswer, HRESULT> cases[] = {{{kOddResult}, kOddResult},
                                                  {{S_OK, Throws::kInteger}, MAPI_E_CALL_FAILED},
                                                  {{S_OK, Throws::kRuntimeError}, MAPI_E_CALL_FAILED},
                                                  {{S_OK, Throws::kBadAlloc}, MAPI_E_NOT_ENOUGH_MEMORY}};
  for (const auto& [answer, expected] : cases) {
    for (const char* operation : {"Advise", "OpenEntry", "NewEntry", "Details"})
      script.answers[operation] = answer;
    EXPECT_EQ(CallAll(id, id), Results(4, expected));
  }
}

TEST_F(Routing, NewEntryTakesTheContainerElseTheTemplate) {
  Load("C");
  Load("T");
  Open();
  Bytes container(20, 'C');
  Bytes form(20, 'T');
  const struct {
    ULONG containerSize;
    ENTRYID* container;
    ULONG formSize;
    ENTRYID* form;
    HRESULT expected;
    std::vector<std::string> calls;
  } cases[] = {{20, Id(container), 20, Id(form), S_OK, {"C.NewEntry"}},
               {0, Id(container), 20, Id(form), S_OK, {"T.NewEntry"}},
               {20, nullptr, 20, Id(form), S_OK, {"T.NewEntry"}},
               {20, nullptr, 20, nullptr, MAPI_E_NO_SUPPORT, {}},
               {0, Id(container), 0, nullptr, MAPI_E_INVALID_PARAMETER, {}},
               {0, nullptr, 0, Id(form), MAPI_E_INVALID_PARAMETER, {}},
               {19, Id(container), 20, Id(form), MAPI_E_INVALID_ENTRYID, {}}};
  for (const auto& c : cases) {
    log.lines.clear();
    ULONG size = 0;
    MapiBuffer<ENTRYID> made;
    EXPECT_EQ(book->NewEntry(0, 0, c.containerSize, c.container, c.formSize, c.form, &size, made.Put()),
              c.expected);
    EXPECT_EQ(log.lines, c.calls);
  }
}

}  // namespace
}  // namespace orv::test
