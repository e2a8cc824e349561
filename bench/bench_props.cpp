// GetProps of a property object against a copy of the same values by hand.
#include <span>
#include <string>
#include <vector>

#include "bench/harness.h"
#include "bench/values.h"
#include "platform/com_ptr.h"
#include "props/base_prop.h"

namespace orv::bench {
namespace {

constexpr ULONG kCount = 20;

class Section final : public PropObject<IProfSect> {
 public:
  explicit Section(std::span<const SPropValue> values) { Require(LoadLocked(values) == S_OK, "loading"); }

 private:
  bool Supports(REFIID iid) const override {
    return IsOneOf(iid, IID_IUnknown, IID_IMAPIProp, IID_IProfSect);
  }
};

// Every fifth and second value a string: eight of the twenty.
std::vector<SPropValue> Values() {
  static const WString kName = ORV_W("A display name of usual length");
  std::vector<SPropValue> values;
  for (ULONG i = 0; i < kCount; ++i) {
    const bool isText = i % 5 == 0 || i % 5 == 2;
    values.push_back(isText ? Text(PROP_TAG(PT_UNICODE, 0x6600 + i), kName)
                            : Number(PROP_TAG(PT_LONG, 0x6600 + i), 7));
  }
  return values;
}

// Asks for every `stride`-th value in turn, counted round.
void CompareOrder(const char* order, ULONG stride, double atMost) {
  const std::vector<SPropValue> stored = Values();
  const auto section = ComPtr<Section>::Adopt(new Section(stored));
  std::vector<SPropValue> values;
  for (ULONG i = 1; i <= kCount; ++i) values.push_back(stored[i * stride % kCount]);
  std::vector<ULONG> words = {kCount};
  for (const SPropValue& value : values) words.push_back(value.ulPropTag);
  auto* tags = reinterpret_cast<SPropTagArray*>(words.data());

  const auto ours = [&] {
    ULONG count = 0;
    SPropValue* found = nullptr;
    section->GetProps(tags, MAPI_UNICODE, &count, &found);
    OrvFreeBuffer(found);
  };
  std::vector<HandValue> known;
  for (const SPropValue& value : values) known.push_back(WithLength(value));
  const auto floor = [&] { FreeByHand(CopyByHand(known.data(), kCount)); };
  Report("GetProps of 20, 8 of them strings, " + std::string(order), Compare(ours, floor), atMost);
}

const Benchmark kProps("props", [] {
  CompareOrder("in stored order", 1, 1.25);
  CompareOrder("in reverse", kCount - 1, 1.25);
  CompareOrder("in no order", 7, 1.4);
});

}  // namespace
}  // namespace orv::bench
