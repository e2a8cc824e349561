// The reader of library files, over an image made by hand: every truncation and many mutations of it as well.
#include "tools/orvctl/image.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>

namespace orvctl {
namespace {

// One section at address 0x1000 and file offset 0x200: exports at its begin, imports behind, TLS behind those.
class Builder {
 public:
  Builder() : bytes_(0x600, '\0') {
    Put("MZ", 0);
    Put32(0x3C, 0x40);
    Put("PE", 0x40);
    Put16(0x44, kMachineX64);
    Put16(0x46, 1);       // sections
    Put16(0x54, 240);     // size of the optional header
    Put16(0x56, 0x2000);  // a library
    Put16(0x58, 0x20B);
    Put32(0x58 + 24, 0x10000);  // base
    Put32(0x58 + 108, 16);
    for (const auto& [index, address, size] :
         {std::array{0u, 0x1000u, 0x100u}, {1u, 0x1100u, 40u}, {9u, 0x1200u, 40u}}) {
      Put32(0x58 + 112 + index * 8, address);
      Put32(0x58 + 112 + index * 8 + 4, size);
    }
    const size_t section = 0x58 + 240;
    Put32(section + 8, 0x400);
    Put32(section + 12, 0x1000);
    Put32(section + 16, 0x400);
    Put32(section + 20, 0x200);
    Exports();
    Imports();
    Put32(At(0x1200) + 24, 0x11280);  // callbacks
    Put32(At(0x1280), 0x11000);
  }
  std::string bytes() const { return bytes_; }
  void Put32(size_t at, uint32_t value) { std::memcpy(bytes_.data() + at, &value, 4); }

 private:
  static size_t At(size_t address) { return address - 0x1000 + 0x200; }
  void Put(const char* text, size_t at) { std::memcpy(bytes_.data() + at, text, std::strlen(text)); }
  void Put16(size_t at, uint16_t value) { std::memcpy(bytes_.data() + at, &value, 2); }
  void Exports() {
    for (const auto& [at, value] :
         {std::pair{16u, 5u}, {20u, 3u}, {24u, 2u}, {28u, 0x1040u}, {32u, 0x1050u}, {36u, 0x1060u}})
      Put32(At(0x1000) + at, value);
    Put32(At(0x1040), 0x1300);  // a function
    Put32(At(0x1044), 0x1090);  // a forwarder
    Put32(At(0x1048), 0x1310);  // without a name
    Put32(At(0x1050), 0x1070);
    Put32(At(0x1054), 0x1080);
    Put16(At(0x1062), 1);
    Put("Alpha", At(0x1070));
    Put("Beta", At(0x1080));
    Put("OTHER.Beta", At(0x1090));
  }
  void Imports() {
    Put32(At(0x1100), 0x1140);
    Put32(At(0x1100) + 12, 0x1170);
    Put32(At(0x1140), 0x1180);
    Put32(At(0x1148), 7);
    Put32(At(0x114C), 0x80000000);
    Put("other.dll", At(0x1170));
    Put("Gamma", At(0x1182));
  }

  std::string bytes_;
};

TEST(Image, TellsMachineExportsImportsAndThreadCallbacks) {
  const auto image = ReadImage(Builder().bytes());
  ASSERT_TRUE(image);
  EXPECT_FALSE(image->isTruncated || image->isShort);
  EXPECT_TRUE(image->isLibrary);
  EXPECT_EQ(MachineName(image->machine), "x64");
  ASSERT_EQ(image->exports.size(), 3u);
  EXPECT_EQ(image->exports[0].name, "Alpha");
  EXPECT_EQ(image->exports[1].forwardsTo, "OTHER.Beta");
  EXPECT_EQ(image->exports[2].ordinal, 7u);
  EXPECT_TRUE(image->Exports(ImportedFunction{{}, 7}) && image->Exports("Beta") && !image->Exports("beta"));
  ASSERT_EQ(image->imports.size(), 1u);
  EXPECT_EQ(image->imports[0].library, "other.dll");
  ASSERT_EQ(image->imports[0].functions.size(), 2u);
  EXPECT_EQ(FunctionName(image->imports[0].functions[0]), "Gamma");
  EXPECT_EQ(FunctionName(image->imports[0].functions[1]), "#7");
  EXPECT_EQ(image->tlsCallbacks, 1u);
}

TEST(Image, DamageIsRefusedOrSeenAndNeverFollowed) {
  const std::string whole = Builder().bytes();
  EXPECT_FALSE(ReadImage("") || ReadImage("MZ") || ReadImage(std::string(4096, 'x')));
  size_t refused = 0;
  for (size_t size = 0; size < whole.size(); ++size) {
    const auto image = ReadImage(whole.substr(0, size));
    EXPECT_TRUE(!image || image->isShort || size >= 0x600) << size;
    refused += !image || image->isTruncated || image->exports.size() < 3 || image->imports.empty();
  }
  EXPECT_GT(refused, 0x380u);  // up to where the last table ends
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string bytes = whole;
    for (int n = 0; n < 3; ++n)
      bytes[random() % bytes.size()] = static_cast<char>(random() % 3 == 0 ? 0xFF : random());
    ReadImage(bytes);
  }
  Builder endless;  // names that no file could hold
  endless.Put32(0x200 + 20, 0xFFFFFFFF);
  endless.Put32(0x200 + 24, 0xFFFFFFFF);
  EXPECT_TRUE(ReadImage(endless.bytes())->isTruncated);
}

TEST(Image, DecorationIsToldFromNames) {
  for (const auto& [name, bare] : {std::pair{"ABProviderOpen", ""},
                                   {"_ABProviderOpen@40", "ABProviderOpen"},
                                   {"ABProviderOpen@40", "ABProviderOpen"},
                                   {"?ABProviderOpen@@YAJXZ", "ABProviderOpen"},
                                   {"Name@", ""},
                                   {"Name@x", ""},
                                   {"", ""}})
    EXPECT_EQ(UndecoratedName(name), bare) << name;
}

}  // namespace
}  // namespace orvctl
