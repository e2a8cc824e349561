#include "tools/orvctl/byte_streams.h"

#include <algorithm>

namespace orv::sdk {
template <>
inline constexpr GUID kIidOf<ISequentialStream> = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0, 0xAA, 0, 0x44, 0x77, 0x3D}};
template <>
inline constexpr GUID kIidOf<IStream> = {0x0000000C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
}  // namespace orv::sdk

namespace orvctl {
namespace {

using orv::sdk::Guarded;

// What a stream of one direction cannot do.
class OneWayStream : public orv::sdk::Object<IStream, ISequentialStream> {
 public:
  ORV_REFUSE(Read, STG_E_ACCESSDENIED, void*, ULONG, ULONG*)
  ORV_REFUSE(Write, STG_E_ACCESSDENIED, const void*, ULONG, ULONG*)
  ORV_REFUSE(Seek, STG_E_INVALIDFUNCTION, LARGE_INTEGER, DWORD, ULARGE_INTEGER*)
  ORV_REFUSE(SetSize, STG_E_INVALIDFUNCTION, ULARGE_INTEGER)
  ORV_REFUSE(CopyTo, E_NOTIMPL, IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*)
  ORV_REFUSE(Commit, S_OK, DWORD)
  ORV_REFUSE(Revert, E_NOTIMPL, )
  ORV_REFUSE(LockRegion, STG_E_INVALIDFUNCTION, ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
  ORV_REFUSE(UnlockRegion, STG_E_INVALIDFUNCTION, ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
  ORV_REFUSE(Stat, E_NOTIMPL, STATSTG*, DWORD)
  ORV_REFUSE(Clone, E_NOTIMPL, IStream**)
};

class SourceStream final : public OneWayStream {
 public:
  explicit SourceStream(std::unique_ptr<formats::ByteSource> source) : source_(std::move(source)) {}

  // As much as was asked for; less only at the end.
  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG size, ULONG* read) override {
    ULONG done = 0;
    const HRESULT hr = Guarded([&]() -> HRESULT {
      while (done < size) {
        const auto some = source_->Read(static_cast<char*>(bytes) + done, size - done);
        if (!some) return STG_E_READFAULT;
        if (*some == 0) return S_FALSE;
        done += static_cast<ULONG>(*some);
      }
      return S_OK;
    });
    if (read != nullptr) *read = done;
    return hr;
  }

 private:
  const std::unique_ptr<formats::ByteSource> source_;
};

class SinkStream final : public OneWayStream {
 public:
  explicit SinkStream(formats::ByteSink& sink) : sink_(sink) {}

  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG size, ULONG* written) override {
    const HRESULT hr = Guarded([&]() -> HRESULT {
      return sink_.Write({static_cast<const char*>(bytes), size}) ? S_OK : STG_E_WRITEFAULT;
    });
    if (written != nullptr) *written = SUCCEEDED(hr) ? size : 0;
    return hr;
  }

 private:
  formats::ByteSink& sink_;
};

class InputSource final : public formats::ByteSource {
 public:
  // A pipe whose writer has gone is at its end.
  std::optional<std::size_t> Read(char* bytes, std::size_t size) override {
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 20;
    DWORD read = 0;
    const auto count = static_cast<DWORD>(std::min(size, kMostAtOnce));
    if (ReadFile(GetStdHandle(STD_INPUT_HANDLE), bytes, count, &read, nullptr)) return read;
    if (GetLastError() == ERROR_BROKEN_PIPE) return 0;
    return std::nullopt;
  }
};

class OutputSink final : public formats::ByteSink {
 public:
  bool Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      constexpr std::size_t kMostAtOnce = std::size_t{1} << 20;
      DWORD written = 0;
      const auto count = static_cast<DWORD>(std::min(bytes.size(), kMostAtOnce));
      const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
      if (!WriteFile(output, bytes.data(), count, &written, nullptr) || written == 0) return false;
      bytes.remove_prefix(written);
    }
    return true;
  }
};

}  // namespace

ComPtr<IStream> StreamFrom(std::unique_ptr<formats::ByteSource> source) {
  return ComPtr<IStream>::Adopt(new SourceStream(std::move(source)));
}

ComPtr<IStream> StreamInto(formats::ByteSink& sink) { return ComPtr<IStream>::Adopt(new SinkStream(sink)); }

std::unique_ptr<formats::ByteSource> StandardInput() { return std::make_unique<InputSource>(); }
std::unique_ptr<formats::ByteSink> StandardOutput() { return std::make_unique<OutputSink>(); }

}  // namespace orvctl
