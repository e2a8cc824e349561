// Copies a window into a bitmap of 32 bits a pixel and writes it with its two headers.
#include "tools/pictures/bitmap_file.h"

#include <cstdint>
#include <memory>
#include <type_traits>

namespace pictures {
namespace {

struct DeleteDc {
  void operator()(HDC dc) const { DeleteDC(dc); }
};
struct DeleteBitmap {
  void operator()(HBITMAP bitmap) const { DeleteObject(bitmap); }
};
struct CloseFile {
  void operator()(HANDLE file) const { CloseHandle(file); }
};
using MemoryDc = std::unique_ptr<std::remove_pointer_t<HDC>, DeleteDc>;
using Bitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, DeleteBitmap>;
using File = std::unique_ptr<void, CloseFile>;

class WindowDc {
 public:
  explicit WindowDc(HWND window) : window_(window), dc_(GetWindowDC(window)) {}
  ~WindowDc() {
    if (dc_) ReleaseDC(window_, dc_);
  }
  WindowDc(const WindowDc&) = delete;
  WindowDc& operator=(const WindowDc&) = delete;
  HDC get() const { return dc_; }

 private:
  HWND window_;
  HDC dc_;
};

BITMAPINFO Header(LONG width, LONG height) {
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof(info.bmiHeader);
  info.bmiHeader.biWidth = width;
  info.bmiHeader.biHeight = height;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  return info;
}

bool WriteAll(HANDLE file, const void* bytes, DWORD size) {
  DWORD written = 0;
  return WriteFile(file, bytes, size, &written, nullptr) && written == size;
}

bool WriteBitmap(const std::wstring& path, const BITMAPINFOHEADER& header, const void* bits) {
  HANDLE handle =
      CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return false;
  const File file(handle);
  const auto size = static_cast<DWORD>(header.biWidth * header.biHeight * 4);
  BITMAPFILEHEADER start{};
  start.bfType = 0x4D42;
  start.bfOffBits = sizeof(start) + sizeof(header);
  start.bfSize = start.bfOffBits + size;
  return WriteAll(file.get(), &start, sizeof(start)) && WriteAll(file.get(), &header, sizeof(header)) &&
         WriteAll(file.get(), bits, size);
}

}  // namespace

bool SaveWindow(HWND window, const std::wstring& path) {
  RECT bounds{};
  GetWindowRect(window, &bounds);
  const LONG width = bounds.right - bounds.left;
  const LONG height = bounds.bottom - bounds.top;
  const WindowDc source(window);
  const MemoryDc memory(CreateCompatibleDC(source.get()));
  // A mirrored window has a mirrored device context; the file shows what the eye sees.
  SetLayout(source.get(), 0);
  const BITMAPINFO info = Header(width, height);
  void* bits = nullptr;
  const Bitmap bitmap(CreateDIBSection(memory.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  if (!memory || !bitmap) return false;
  HGDIOBJ previous = SelectObject(memory.get(), bitmap.get());
  const BOOL copied = BitBlt(memory.get(), 0, 0, width, height, source.get(), 0, 0, SRCCOPY);
  SelectObject(memory.get(), previous);
  return copied && WriteBitmap(path, info.bmiHeader, bits);
}

}  // namespace pictures
