// Connection numbers, what providers are told and when, and what a failed Advise leaves behind.
#include "platform/faults.h"
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

class Advising : public BookTest {
 protected:
  HRESULT Advise(BYTE uid, ULONG* connection) {
    Bytes id(20, uid);
    return book->Advise(20, Id(id), 1, &sink, connection);
  }

  FakeSink sink;
};

TEST_F(Advising, NumbersRiseAndNoneIsGivenTwice) {
  FakeScript& a = Load("A");
  FakeScript& b = Load("B");
  Open();
  ULONG first = 0, second = 0, third = 0;
  EXPECT_EQ(Advise('A', &first), S_OK);
  EXPECT_EQ(Advise('B', &second), S_OK);
  EXPECT_EQ(first, 1u);
  EXPECT_EQ(second, 2u);
  EXPECT_EQ(book->Unadvise(first), S_OK);
  EXPECT_TRUE(a.advises.empty());
  ASSERT_EQ(b.advises.size(), 1u);
  EXPECT_EQ(Advise('A', &third), S_OK);
  EXPECT_EQ(third, 3u);
  log.lines.clear();
  for (const ULONG unknown : {first, ULONG{0}, ULONG{4}})
    EXPECT_EQ(book->Unadvise(unknown), MAPI_E_NOT_FOUND);
  EXPECT_TRUE(log.lines.empty()) << "an unknown number concerns no provider";
}

TEST_F(Advising, TheOutIsClearedBeforeAnythingElse) {
  FakeScript& script = Load("A");
  script.answers["Advise"].result = MAPI_E_NOT_ENOUGH_RESOURCES;
  Open();
  Bytes id(20, 'A');
  Bytes unknown(20, 'Z');
  const struct {
    ULONG size;
    ENTRYID* id;
    HRESULT expected;
  } cases[] = {{20, nullptr, MAPI_E_INVALID_PARAMETER},
               {0, Id(id), MAPI_E_INVALID_PARAMETER},
               {19, Id(id), MAPI_E_INVALID_ENTRYID},
               {20, Id(unknown), MAPI_E_NOT_FOUND},
               {20, Id(id), MAPI_E_NOT_ENOUGH_RESOURCES}};
  for (const auto& c : cases) {
    ULONG connection = 77;
    EXPECT_EQ(book->Advise(c.size, c.id, 1, &sink, &connection), c.expected);
    EXPECT_EQ(connection, 0u);
  }
  EXPECT_EQ(book->Advise(20, Id(id), 1, &sink, nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(sink.references, 1u);
}

TEST_F(Advising, TheSessionsEndUndoesNewestFirstWhileProvidersLive) {
  Load("A");
  Load("B");
  const auto held = ComPtr<CAddrBook>::Share(&Open());
  ULONG connection = 0;
  ASSERT_EQ(Advise('A', &connection), S_OK);
  ASSERT_EQ(Advise('B', &connection), S_OK);
  log.lines.clear();
  EndSession();
  EXPECT_EQ(log.lines, (std::vector<std::string>{"B.Unadvise", "A.Unadvise", "B.Released", "A.Released"}));
  EXPECT_EQ(sink.references, 1u);
}

TEST_F(Advising, AThrowingUnadviseDoesNotKeepTheOthers) {
  FakeScript& a = Load("A");
  FakeScript& b = Load("B");
  Open();
  ULONG first = 0, second = 0;
  ASSERT_EQ(Advise('A', &first), S_OK);
  ASSERT_EQ(Advise('B', &second), S_OK);
  b.answers["Unadvise"].throws = FakeAnswer::Throws::kRuntimeError;
  EXPECT_EQ(book->Unadvise(second), MAPI_E_CALL_FAILED);
  EXPECT_EQ(book->Unadvise(second), MAPI_E_NOT_FOUND) << "undone for the client all the same";
  ASSERT_EQ(Advise('B', &second), S_OK);
  EndSession();
  EXPECT_TRUE(a.advises.empty());
  ASSERT_EQ(b.advises.size(), 2u);
  for (const auto& left : b.advises) left.sink->Release();
}

// Each of the two blocks in turn: the provider keeps its side, and exactly that.
TEST_F(Advising, WithoutMemoryTheProvidersRegistrationStays) {
  class QuietScript : public FakeScript {
   public:
    using FakeScript::FakeScript;
    FakeAnswer OnCall(const char*) override { return {}; }
    ULONG OnAdvise(const std::string&, ULONG, IMAPIAdviseSink* given) override {
      given->AddRef();
      if (armed != 0) faults::Arm(faults::Site::kOperatorNew, armed);
      return ++registered;
    }
    HRESULT OnUnadvise(ULONG) override {
      ++undone;
      return S_OK;
    }
    std::size_t armed = 0;
    ULONG registered = 0;
    ULONG undone = 0;
  };
  QuietScript script("Q", FakeUid('Q'), &log);
  LoadObject(MakeFakeProvider(&script, kOwnBuffers), 'Q');
  Open();
  for (script.armed = 1; script.armed <= 2; ++script.armed) {
    ULONG connection = 7;
    const HRESULT hr = Advise('Q', &connection);
    EXPECT_TRUE(faults::Fired(faults::Site::kOperatorNew));
    faults::Arm(faults::Site::kOperatorNew, 0);
    EXPECT_EQ(hr, MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(connection, 0u);
  }
  script.armed = 0;
  ULONG connection = 0;
  EXPECT_EQ(Advise('Q', &connection), S_OK);
  EXPECT_EQ(connection, 1u) << "a number is spent on success only";
  EndSession();
  EXPECT_EQ(script.registered, 3u);
  EXPECT_EQ(script.undone, 1u);
  EXPECT_EQ(sink.references, 4u) << "two registrations were left, and this provider releases no sink";
}

}  // namespace
}  // namespace orv::test
