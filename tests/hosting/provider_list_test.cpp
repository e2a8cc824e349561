// The provider list and what a support object may still do when its provider has gone.
#include "hosting/provider_list.h"

#include <thread>

#include "tests/addrbook/address_lists.h"

namespace orv::test {
namespace {

class ServiceList : public testing::Test {
 protected:
  ProviderRecord* Add(BYTE service) {
    auto record = std::make_unique<ProviderRecord>(Module(), FakeUid(service));
    record->AdoptProvider(MakeFakeProvider(&script_, kOwnBuffers));
    ProviderRecord* added = record.get();
    list_->Add(std::move(record));
    return added;
  }

  FakeScript script_{"a", FakeUid(1), nullptr};
  ComPtr<CABServiceList> list_ = CABServiceList::Create();
};

TEST_F(ServiceList, LaterProviderWinsASharedUid) {
  ProviderRecord* const earlier = Add(1);
  ProviderRecord* const later = Add(2);
  for (const BYTE uid : {BYTE{9}, BYTE{8}}) EXPECT_EQ(earlier->RegisterUid(FakeUid(uid)), S_OK);
  EXPECT_EQ(later->RegisterUid(FakeUid(9)), S_OK);
  EXPECT_EQ(later->RegisterUid(FakeUid(9)), MAPI_E_COLLISION);
  const ProviderRecord* const winners[] = {later, earlier};
  for (std::size_t i = 0; i < 2; ++i) {
    IAddrBook* provider = nullptr;
    std::size_t index = 99;
    EXPECT_EQ(list_->FindByRegisteredUid(FakeUid(static_cast<BYTE>(9 - i)), &provider, &index), S_OK);
    EXPECT_EQ(provider, winners[i]->Provider());
    EXPECT_EQ(index, i);
  }
}

TEST_F(ServiceList, FindsByEntryIdentifierOfTwentyBytesAndMore) {
  ASSERT_EQ(Add(1)->RegisterUid(script_.uid), S_OK);
  const std::vector<BYTE> id = script_.EntryId("k");
  const auto find = [&](std::size_t size, const BYTE* bytes) {
    IAddrBook* provider = nullptr;
    return list_->FindByEntryId(static_cast<ULONG>(size), reinterpret_cast<const ENTRYID*>(bytes), &provider);
  };
  EXPECT_EQ(find(19, id.data()), MAPI_E_NOT_FOUND);
  EXPECT_EQ(find(20, nullptr), MAPI_E_NOT_FOUND);
  // Every byte of the UID counts, the flags before it and the key behind it do not.
  for (std::size_t i = 0; i < id.size(); ++i) {
    std::vector<BYTE> other = id;
    other[i] ^= 1;
    EXPECT_EQ(find(other.size(), other.data()), i >= 4 && i < 20 ? MAPI_E_NOT_FOUND : S_OK) << i;
  }
}

TEST_F(ServiceList, RegistersOnOneThreadWhileOthersLookUp) {
  constexpr ULONG kUids = 500;
  ProviderRecord* record = Add(1);
  const auto uidOf = [](ULONG number) {
    MAPIUID uid = FakeUid(1);
    std::memcpy(&uid, &number, sizeof number);
    return uid;
  };
  std::thread provider([&] {
    for (ULONG i = 0; i < kUids; ++i) EXPECT_EQ(record->RegisterUid(uidOf(i)), S_OK);
  });
  IAddrBook* found = nullptr;
  // The last one is seen at some time, and all of them from then on.
  while (FAILED(list_->FindByRegisteredUid(uidOf(kUids - 1), &found))) std::this_thread::yield();
  for (ULONG i = 0; i < kUids; ++i) EXPECT_EQ(list_->FindByRegisteredUid(uidOf(i), &found), S_OK) << i;
  provider.join();
  const auto registered = record->ShareRegistered();
  list_->UnloadAll();
  EXPECT_EQ(registered->Register(uidOf(kUids)), MAPI_E_INVALID_PARAMETER);
}

TEST_F(ServiceList, TakesARecordOutByItsService) {
  ProviderRecord* const record = Add(1);
  ProviderRecord* found = nullptr;
  std::unique_ptr<ProviderRecord> taken;
  EXPECT_EQ(list_->FindByServiceUid(FakeUid(1), &found), S_OK);
  EXPECT_EQ(list_->TakeByServiceUid(FakeUid(1), &taken), S_OK);
  EXPECT_EQ(found, record);
  EXPECT_EQ(taken.get(), record);
  EXPECT_EQ(list_->TakeByServiceUid(FakeUid(1), &taken), MAPI_E_NOT_FOUND);
}

}  // namespace
}  // namespace orv::test
