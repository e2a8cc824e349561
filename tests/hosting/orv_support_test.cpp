// The support object of whoever is no provider, and the copies that it makes for both.
#include "hosting/orv_support.h"

#include <gtest/gtest.h>

#include <memory>

#include "hosting/provider_list.h"
#include "tests/addrbook/address_lists.h"

namespace orv::test {
namespace {

TEST(Support, OfNoProviderRegistersNothing) {
  const ComPtr<CABServiceList> list = CABServiceList::Create();
  ProviderRecord record(Module(), FakeUid(1));
  const MAPIUID uid = FakeUid(5);
  ComPtr<IOrvSupport> support;
  EXPECT_EQ(CreateSupport(list.Get(), nullptr, support.Put()), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(CreateSupport(nullptr, &record, support.Put()), MAPI_E_INVALID_PARAMETER);
  EXPECT_FALSE(support);
  ASSERT_EQ(CreateSupport(nullptr, nullptr, support.Put()), S_OK);
  EXPECT_EQ(support->SetProviderUID(&uid), MAPI_E_NO_SUPPORT);
}

// The copies themselves are tested where they are written; here: that they are reached, and with which ends.
TEST(Support, CopiesBetweenTwoObjects) {
  FakeLog log;
  FakeScript source("s", FakeUid(1), &log), destination("d", FakeUid(2), &log);
  const ComPtr<IUnknown> from = OpenFake(source, "user"), to = OpenFake(destination, "user");
  ComPtr<IOrvSupport> support;
  ASSERT_EQ(CreateSupport(nullptr, nullptr, support.Put()), S_OK);
  Tags tags{PR_DISPLAY_NAME_W};
  const auto copy = [&] {
    return support->DoCopyProps(&IID_IMailUser, from.Get(), tags.Get(), 0, nullptr, &IID_IMailUser, to.Get(),
                                0, nullptr);
  };
  EXPECT_EQ(copy(), S_OK);
  EXPECT_EQ(log.Count("d.Object:SetProps"), 1u);
  EXPECT_EQ(log.Count("s.Object:SetProps"), 0u);
  source.answers["Object:GetProps"] = {S_OK, FakeAnswer::Throws::kInteger};
  EXPECT_EQ(copy(), MAPI_E_CALL_FAILED);
  EXPECT_EQ(support->DoCopyTo(&IID_IMAPITable, from.Get(), 0, nullptr, nullptr, 0, nullptr, &IID_IMailUser,
                              to.Get(), MAPI_UNICODE, nullptr),
            MAPI_E_NO_SUPPORT);
}

}  // namespace
}  // namespace orv::test
