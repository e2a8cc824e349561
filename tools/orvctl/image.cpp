// Reads the tables of an image by their published layout. Every offset comes from the file, so each read asks first.
#include "tools/orvctl/image.h"

#include <algorithm>
#include <cstring>

namespace orvctl {
namespace {

// More than any real image has; a table that claims more is cut there.
constexpr size_t kMostEntries = 65536;
constexpr size_t kLongestName = 4096;

constexpr size_t kHeaderOffsetAt = 0x3C;
constexpr size_t kFileHeaderSize = 20;
constexpr size_t kSectionHeaderSize = 40;
constexpr size_t kExportDirectorySize = 40;
constexpr size_t kImportDescriptorSize = 20;
constexpr uint16_t kLibraryFlag = 0x2000;
constexpr uint16_t kMagic64 = 0x20B;
constexpr uint16_t kMagic32 = 0x10B;

struct Directory {
  uint32_t address = 0, size = 0;
};

struct Section {
  uint32_t address = 0, size = 0, fileOffset = 0, fileSize = 0;
};

class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  bool Open();
  Image Read();
  // Of one that is an image whose headers are not all there; nothing of any other.
  std::optional<Image> TakeCutOff();

 private:
  template <class T>
  T At(size_t offset) {
    T value{};
    if (offset > bytes_.size() || bytes_.size() - offset < sizeof(T)) {
      image_.isTruncated = true;
    } else {
      std::memcpy(&value, bytes_.data() + offset, sizeof(T));
    }
    return value;
  }
  // Where in the file an address of the loaded image lies; past its end for one that lies nowhere.
  size_t OffsetOf(uint64_t address) const {
    for (const Section& each : sections_) {
      const bool isInside = address >= each.address && address - each.address < each.fileSize;
      if (isInside) return each.fileOffset + static_cast<size_t>(address - each.address);
    }
    return bytes_.size();
  }
  template <class T>
  T AtAddress(uint64_t address) {
    return At<T>(OffsetOf(address));
  }
  std::string TextAt(uint64_t address);

  void ReadDirectories(size_t optionalHeader);
  void ReadSections(size_t table, size_t count);
  void ReadExports();
  void ReadExport(uint32_t functions, uint32_t index, uint32_t base, std::string name);
  void ReadImports();
  void ReadDelayedImports();
  ImageImport ReadImport(uint32_t name, uint64_t thunks);
  void ReadTls();
  size_t Cut(size_t count) {
    image_.isTruncated = image_.isTruncated || count > kMostEntries;
    return std::min(count, kMostEntries);
  }

  std::string_view bytes_;
  Image image_;
  bool is64_ = false;
  uint64_t base_ = 0;
  size_t optionalHeader_ = 0;
  std::vector<Section> sections_;
  Directory exports_, imports_, delayed_, tls_;
};

bool Reader::Open() {
  if (bytes_.substr(0, 2) != "MZ") return false;
  const size_t header = At<uint32_t>(kHeaderOffsetAt);
  if (header >= bytes_.size() || bytes_.substr(header, 4) != std::string_view("PE\0\0", 4)) return false;
  const size_t fileHeader = header + 4;
  image_.machine = At<uint16_t>(fileHeader);
  image_.isLibrary = (At<uint16_t>(fileHeader + 18) & kLibraryFlag) != 0;
  optionalHeader_ = fileHeader + kFileHeaderSize;
  const auto magic = At<uint16_t>(optionalHeader_);
  is64_ = magic == kMagic64;
  if (!is64_ && magic != kMagic32) return false;
  base_ = is64_ ? At<uint64_t>(optionalHeader_ + 24) : At<uint32_t>(optionalHeader_ + 28);
  ReadDirectories(optionalHeader_);
  ReadSections(optionalHeader_ + At<uint16_t>(fileHeader + 16), At<uint16_t>(fileHeader + 2));
  return !image_.isTruncated;
}

void Reader::ReadDirectories(size_t optionalHeader) {
  const size_t table = optionalHeader + (is64_ ? 112 : 96);
  const auto count = At<uint32_t>(table - 4);
  const auto read = [&](size_t index) {
    if (index >= count) return Directory{};
    return Directory{At<uint32_t>(table + index * 8), At<uint32_t>(table + index * 8 + 4)};
  };
  constexpr size_t kExports = 0, kImports = 1, kTls = 9, kDelayed = 13;
  exports_ = read(kExports);
  imports_ = read(kImports);
  tls_ = read(kTls);
  delayed_ = read(kDelayed);
}

void Reader::ReadSections(size_t table, size_t count) {
  for (size_t at = table; sections_.size() < count && !image_.isTruncated; at += kSectionHeaderSize) {
    sections_.push_back(
        {At<uint32_t>(at + 12), At<uint32_t>(at + 8), At<uint32_t>(at + 20), At<uint32_t>(at + 16)});
  }
}

std::optional<Image> Reader::TakeCutOff() {
  image_.isShort = true;
  if (optionalHeader_ == 0 || !image_.isTruncated) return std::nullopt;
  return std::move(image_);
}

Image Reader::Read() {
  ReadExports();
  ReadImports();
  ReadDelayedImports();
  ReadTls();
  image_.isShort = std::any_of(sections_.begin(), sections_.end(), [this](const Section& each) {
    return each.fileSize != 0 && uint64_t{each.fileOffset} + each.fileSize > bytes_.size();
  });
  return std::move(image_);
}

std::string Reader::TextAt(uint64_t address) {
  const std::string_view rest = bytes_.substr(std::min(OffsetOf(address), bytes_.size()), kLongestName);
  const size_t end = rest.find('\0');
  image_.isTruncated = image_.isTruncated || end == std::string_view::npos;
  return std::string(rest.substr(0, end));
}

void Reader::ReadExports() {
  if (exports_.address == 0 || exports_.size < kExportDirectorySize) return;
  const uint64_t table = exports_.address;
  const auto base = AtAddress<uint32_t>(table + 16);
  const size_t count = Cut(AtAddress<uint32_t>(table + 20)), names = Cut(AtAddress<uint32_t>(table + 24));
  const auto functions = AtAddress<uint32_t>(table + 28), texts = AtAddress<uint32_t>(table + 32),
             indices = AtAddress<uint32_t>(table + 36);
  std::vector<bool> isNamed(count);
  for (size_t i = 0; i < names && !image_.isTruncated; ++i) {
    const auto index = AtAddress<uint16_t>(indices + uint64_t{i} * 2);
    if (index >= count) continue;
    isNamed[index] = true;
    ReadExport(functions, index, base, TextAt(AtAddress<uint32_t>(texts + uint64_t{i} * 4)));
  }
  for (uint32_t i = 0; i < count && !image_.isTruncated; ++i) {
    if (!isNamed[i]) ReadExport(functions, i, base, {});
  }
}

// One whose address lies within the export table itself is the text of a forwarder; one at 0 is a gap.
void Reader::ReadExport(uint32_t functions, uint32_t index, uint32_t base, std::string name) {
  const auto address = AtAddress<uint32_t>(functions + uint64_t{index} * 4);
  if (address == 0) return;
  const bool isForwarder = address >= exports_.address && address - exports_.address < exports_.size;
  image_.exports.push_back({std::move(name), base + index, isForwarder ? TextAt(address) : std::string()});
}

void Reader::ReadImports() {
  if (imports_.address == 0) return;
  for (size_t i = 0; i < kMostEntries && !image_.isTruncated; ++i) {
    const uint64_t at = imports_.address + uint64_t{i} * kImportDescriptorSize;
    const auto lookup = AtAddress<uint32_t>(at), name = AtAddress<uint32_t>(at + 12),
               bound = AtAddress<uint32_t>(at + 16);
    if (name == 0) return;
    image_.imports.push_back(ReadImport(name, lookup != 0 ? lookup : bound));
  }
}

// Those that are looked up at their first call are needed all the same, a while later.
void Reader::ReadDelayedImports() {
  constexpr size_t kDescriptorSize = 32;
  if (delayed_.address == 0) return;
  for (size_t i = 0; i < kMostEntries && !image_.isTruncated; ++i) {
    const uint64_t at = delayed_.address + uint64_t{i} * kDescriptorSize;
    const auto name = AtAddress<uint32_t>(at + 4);
    if (name == 0) return;
    image_.imports.push_back(ReadImport(name, AtAddress<uint32_t>(at + 16)));
  }
}

ImageImport Reader::ReadImport(uint32_t name, uint64_t thunks) {
  ImageImport import{TextAt(name), {}};
  const size_t width = is64_ ? 8 : 4;
  const uint64_t byOrdinal = uint64_t{1} << (width * 8 - 1);
  for (size_t i = 0; i < kMostEntries && !image_.isTruncated; ++i) {
    const uint64_t at = thunks + i * width;
    const uint64_t thunk = is64_ ? AtAddress<uint64_t>(at) : AtAddress<uint32_t>(at);
    if (thunk == 0) break;
    const bool isNumber = (thunk & byOrdinal) != 0;
    import.functions.push_back(isNumber ? ImportedFunction{{}, static_cast<uint32_t>(thunk & 0xFFFF)}
                                        : ImportedFunction{TextAt((thunk & 0x7FFFFFFF) + 2), 0});
  }
  return import;
}

void Reader::ReadTls() {
  image_.hasTlsDirectory = tls_.address != 0 && tls_.size != 0;
  if (!image_.hasTlsDirectory) return;
  const size_t width = is64_ ? 8 : 4;
  const auto read = [&](uint64_t at) { return is64_ ? AtAddress<uint64_t>(at) : AtAddress<uint32_t>(at); };
  const uint64_t callbacks = read(tls_.address + 3 * width);
  if (callbacks <= base_) return;
  while (image_.tlsCallbacks < kMostEntries && !image_.isTruncated &&
         read(callbacks - base_ + image_.tlsCallbacks * width) != 0) {
    ++image_.tlsCallbacks;
  }
}

}  // namespace

bool Image::Exports(std::string_view name) const {
  return std::any_of(exports.begin(), exports.end(),
                     [&](const ImageExport& each) { return each.name == name; });
}

bool Image::Exports(const ImportedFunction& function) const {
  if (!function.name.empty()) return Exports(function.name);
  return std::any_of(exports.begin(), exports.end(),
                     [&](const ImageExport& each) { return each.ordinal == function.ordinal; });
}

std::optional<Image> ReadImage(std::string_view bytes) {
  Reader reader(bytes);
  if (reader.Open()) return reader.Read();
  return reader.TakeCutOff();
}

std::string MachineName(uint16_t machine) {
  if (machine == kMachineX64) return "x64";
  if (machine == kMachineX86) return "x86";
  if (machine == kMachineArm64) return "ARM64";
  return "number " + std::to_string(machine);
}

std::string UndecoratedName(std::string_view name) {
  if (name.empty()) return {};
  if (name.front() == '?') return std::string(name.substr(1, name.find('@') - 1));
  const size_t at = name.find('@');
  const bool hasSize = at != std::string_view::npos && at + 1 < name.size() &&
                       name.find_first_not_of("0123456789", at + 1) == std::string_view::npos;
  if (!hasSize) return {};
  name = name.substr(0, at);
  if (!name.empty() && name.front() == '_') name.remove_prefix(1);
  return std::string(name);
}

std::string FunctionName(const ImportedFunction& function) {
  return function.name.empty() ? "#" + std::to_string(function.ordinal) : function.name;
}

}  // namespace orvctl
