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
  EXPECT_EQ(S_OK, Advise('A', &first));
  EXPECT_EQ(S_OK, Advise('B', &second));
  EXPECT_EQ(1u, first);
  EXPECT_EQ(2u, second);
  EXPECT_EQ(S_OK, book->Unadvise(first));
  EXPECT_TRUE(a.advises.empty());
  ASSERT_EQ(1u, b.advises.size());
  EXPECT_EQ(S_OK, Advise('A', &third));
  EXPECT_EQ(3u, third);
  log.lines.clear();
  for (const ULONG unknown : {first, ULONG{0}, ULONG{4}})
    EXPECT_EQ(MAPI_E_NOT_FOUND, book->Unadvise(unknown));
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
    EXPECT_EQ(c.expected, book->Advise(c.size, c.id, 1, &sink, &connection));
    EXPECT_EQ(0u, connection);
  }
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, book->Advise(20, Id(id), 1, &sink, nullptr));
  EXPECT_EQ(1u, sink.references);
}

TEST_F(Advising, TheSessionsEndUndoesNewestFirstWhileProvidersLive) {
  Load("A");
  Load("B");
  const auto held = ComPtr<CAddrBook>::Share(&Open());
  ULONG connection = 0;
  ASSERT_EQ(S_OK, Advise('A', &connection));
  ASSERT_EQ(S_OK, Advise('B', &connection));
  log.lines.clear();
  EndSession();
  EXPECT_EQ((std::vector<std::string>{"B.Unadvise", "A.Unadvise", "B.Released", "A.Released"}), log.lines);
  EXPECT_EQ(1u, sink.references);
}

TEST_F(Advising, AThrowingUnadviseDoesNotKeepTheOthers) {
  FakeScript& a = Load("A");
  FakeScript& b = Load("B");
  Open();
  ULONG first = 0, second = 0;
  ASSERT_EQ(S_OK, Advise('A', &first));
  ASSERT_EQ(S_OK, Advise('B', &second));
  b.answers["Unadvise"].throws = FakeAnswer::Throws::kRuntimeError;
  EXPECT_EQ(MAPI_E_CALL_FAILED, book->Unadvise(second));
  EXPECT_EQ(MAPI_E_NOT_FOUND, book->Unadvise(second)) << "undone for the client all the same";
  ASSERT_EQ(S_OK, Advise('B', &second));
  EndSession();
  EXPECT_TRUE(a.advises.empty());
  ASSERT_EQ(2u, b.advises.size());
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
    EXPECT_EQ(MAPI_E_NOT_ENOUGH_MEMORY, hr);
    EXPECT_EQ(0u, connection);
  }
  script.armed = 0;
  ULONG connection = 0;
  EXPECT_EQ(S_OK, Advise('Q', &connection));
  EXPECT_EQ(1u, connection) << "a number is spent on success only";
  EndSession();
  EXPECT_EQ(3u, script.registered);
  EXPECT_EQ(1u, script.undone);
  EXPECT_EQ(4u, sink.references) << "two registrations were left, and this provider releases no sink";
}

}  // namespace
}  // namespace orv::test
