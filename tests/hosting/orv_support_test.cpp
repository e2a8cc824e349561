// The support object: registration of UIDs, allocation routines, copies.
#include "hosting/orv_support.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "hosting/provider_list.h"
#include "orv/orv.h"
#include "platform/com_ptr.h"
#include "tests/addrbook/address_lists.h"
#include "tests/props/samples.h"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {
namespace {

class Support : public testing::Test {
 protected:
  ComPtr<IOrvSupport> Make(CABServiceList* list, ProviderRecord* record) {
    ComPtr<IOrvSupport> support;
    EXPECT_EQ(CreateSupport(list, record, support.Put()), S_OK);
    return support;
  }

  ComPtr<CABServiceList> list_ = CABServiceList::Create();
  std::unique_ptr<ProviderRecord> record_ = std::make_unique<ProviderRecord>(Module(), FakeUid(1));
};

TEST_F(Support, RegistersUidsOnlyForAProvider) {
  IOrvSupport* out = nullptr;
  EXPECT_EQ(CreateSupport(list_.Get(), nullptr, &out), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(CreateSupport(nullptr, record_.get(), &out), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(out, nullptr);
  const MAPIUID uid = FakeUid(5);
  EXPECT_EQ(Make(nullptr, nullptr)->SetProviderUID(&uid), MAPI_E_NO_SUPPORT);
  const auto support = Make(list_.Get(), record_.get());
  EXPECT_EQ(support->SetProviderUID(nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(support->SetProviderUID(&uid), S_OK);
  EXPECT_EQ(support->SetProviderUID(&uid), MAPI_E_COLLISION);
  EXPECT_TRUE(record_->Registered().Has(uid));
}

// The copies themselves are tested where they are written; here: that they are reached, and with which ends.
TEST_F(Support, CopiesBetweenTwoObjects) {
  FakeScript source("s", FakeUid(1), nullptr);
  FakeScript destination("d", FakeUid(2), nullptr);
  FakeLog log;
  source.log = destination.log = &log;
  const auto open = [&](FakeScript& script) {
    const auto provider = ComPtr<IAddrBook>::Adopt(MakeFakeProvider(&script, kOwnBuffers));
    std::vector<BYTE> id = script.EntryId("user");
    ULONG type = 0;
    ComPtr<IUnknown> object;
    EXPECT_EQ(provider->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()),
                                  nullptr, 0, &type, object.Put()),
              S_OK);
    return object;
  };
  const ComPtr<IUnknown> from = open(source);
  const ComPtr<IUnknown> to = open(destination);
  const auto support = Make(nullptr, nullptr);
  Tags tags{PR_DISPLAY_NAME_W};
  const auto copy = [&](const ComPtr<IUnknown>& target) {
    return support->DoCopyProps(&IID_IMailUser, from.Get(), tags.Get(), 0, nullptr, &IID_IMailUser,
                                target.Get(), 0, nullptr);
  };
  EXPECT_EQ(copy(to), S_OK);
  EXPECT_EQ(log.Count("d.Object:SetProps"), 1u);
  EXPECT_EQ(log.Count("s.Object:SetProps"), 0u);
  EXPECT_EQ(copy(from), MAPI_E_NO_ACCESS);
  source.answers["Object:GetProps"] = {S_OK, FakeAnswer::Throws::kInteger};
  EXPECT_EQ(copy(to), MAPI_E_CALL_FAILED);
  EXPECT_EQ(support->DoCopyTo(&IID_IMAPITable, from.Get(), 0, nullptr, nullptr, 0, nullptr, &IID_IMailUser,
                              to.Get(), MAPI_UNICODE, nullptr),
            MAPI_E_NO_SUPPORT);
}

}  // namespace
}  // namespace orv::test
