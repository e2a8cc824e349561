// Connection numbers, what providers are told and when, and what a failed Advise leaves behind.
#include "platform/faults.h"
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

class Advising : public BookTest {
 protected:
  HRESULT Advise(BYTE uid, ULONG* connection) {
    Bytes id(20, uid);
    return book->Advise(20, Id(id), 3, &sink, connection);
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
  EXPECT_EQ(book->Unadvise(first), S_OK);
  EXPECT_TRUE(a.advises.empty());
  ASSERT_EQ(b.advises.size(), 1u);
  EXPECT_EQ(b.advises[0].events, 3u);
  EXPECT_EQ(Advise('A', &third), S_OK);
  EXPECT_EQ((std::vector<ULONG>{first, second, third}), (std::vector<ULONG>{1, 2, 3}));
  log.lines.clear();
  for (const ULONG unknown : {first, ULONG{0}, ULONG{4}})
    EXPECT_EQ(book->Unadvise(unknown), MAPI_E_NOT_FOUND);
  EXPECT_TRUE(log.lines.empty()) << "an unknown number concerns no provider";
}

TEST_F(Advising, AThrowingUnadviseDoesNotKeepTheOthers) {
  FakeScript& a = Load("A");
  FakeScript& b = Load("B");
  Open();
  ULONG connection = 0;
  ASSERT_EQ(Advise('A', &connection), S_OK);
  ASSERT_EQ(Advise('B', &connection), S_OK);
  b.answers["Unadvise"].throws = Throws::kRuntimeError;
  EXPECT_EQ(book->Unadvise(connection), MAPI_E_CALL_FAILED);
  EXPECT_EQ(book->Unadvise(connection), MAPI_E_NOT_FOUND) << "undone for the client all the same";
  ASSERT_EQ(Advise('B', &connection), S_OK);
  EndSession();
  EXPECT_TRUE(a.advises.empty());
  ASSERT_EQ(b.advises.size(), 2u);
  for (const auto& left : b.advises) left.sink->Release();
}

// Takes the memory away as soon as the provider has registered.
class ArmingScript final : public FakeScript {
 public:
  using FakeScript::FakeScript;
  ULONG OnAdvise(const std::string& key, ULONG events, IMAPIAdviseSink* given) override {
    const ULONG connection = FakeScript::OnAdvise(key, events, given);
    if (armed != 0) faults::Arm(faults::Site::kOperatorNew, armed);
    return connection;
  }
  std::size_t armed = 0;
};

// Each of the two blocks in turn: the provider keeps its side, and exactly that.
TEST_F(Advising, WithoutMemoryTheProvidersRegistrationStays) {
  auto& script = Load<ArmingScript>("A");
  Open();
  ULONG connection = 7;
  for (script.armed = 1; script.armed <= 2; ++script.armed) {
    const HRESULT hr = Advise('A', &connection);
    EXPECT_TRUE(faults::Fired(faults::Site::kOperatorNew));
    faults::Arm(faults::Site::kOperatorNew, 0);
    EXPECT_EQ(hr, MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(connection, 0u);
  }
  script.armed = 0;
  EXPECT_EQ(Advise('A', &connection), S_OK);
  EXPECT_EQ(connection, 1u) << "a number is spent on success only";
  EndSession();
  ASSERT_EQ(script.advises.size(), 2u);
  for (const auto& left : script.advises) left.sink->Release();
}

}  // namespace
}  // namespace orv::test
