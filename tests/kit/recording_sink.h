// A sink that remembers what it was told, in words.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "orv/orvbase.hpp"

namespace orv::test {

class RecordingSink final : public sdk::Object<IMAPIAdviseSink> {
 public:
  using Act = std::function<void()>;

  static sdk::ComPtr<RecordingSink> Make(Act act = {}) {
    return sdk::ComPtr<RecordingSink>::Adopt(new RecordingSink(std::move(act)));
  }

  ULONG STDMETHODCALLTYPE OnNotify(ULONG count, LPNOTIFICATION events) override {
    {
      const std::lock_guard guard(lock_);
      for (ULONG i = 0; i < count; ++i) {
        told_.push_back(InWords(events[i]));
        if (events[i].ulEventType != fnevTableModified) lastType_ = events[i].info.obj.ulObjType;
      }
      ++calls_;
      thread_ = GetCurrentThreadId();
    }
    if (act_) act_();
    return 0;
  }

  // What was told since the last call.
  std::vector<std::wstring> Take() {
    const std::lock_guard guard(lock_);
    return std::exchange(told_, {});
  }
  size_t Calls() {
    const std::lock_guard guard(lock_);
    return calls_;
  }
  // Of the object that was told last.
  ULONG LastType() {
    const std::lock_guard guard(lock_);
    return lastType_;
  }
  DWORD Thread() {
    const std::lock_guard guard(lock_);
    return thread_;
  }
  // References besides the caller's.
  ULONG Others() {
    AddRef();
    return Release() - 1;
  }

 private:
  explicit RecordingSink(Act act) : act_(std::move(act)) {}

  static std::wstring Text(const void* bytes, size_t size) {
    return {static_cast<const WCHAR*>(bytes), size / sizeof(WCHAR)};
  }
  static std::wstring InWords(const NOTIFICATION& event) {
    if (event.ulEventType != fnevTableModified) {
      const auto& object = event.info.obj;
      const WCHAR* kind = event.ulEventType == fnevObjectCreated   ? L"created "
                          : event.ulEventType == fnevObjectDeleted ? L"deleted "
                                                                   : L"modified ";
      return kind + Text(object.lpEntryID, object.cbEntryID);
    }
    static constexpr const WCHAR* kKinds[] = {L"",       L"changed",  L"error",
                                              L"added ", L"deleted ", L"modified "};
    const TABLE_NOTIFICATION& table = event.info.tab;
    std::wstring words = table.ulTableEvent < std::size(kKinds) ? kKinds[table.ulTableEvent] : L"other";
    const auto key = [](const SPropValue& value) {
      return value.ulPropTag == PR_INSTANCE_KEY ? Text(value.Value.bin.lpb, value.Value.bin.cb)
                                                : std::wstring();
    };
    words += key(table.propIndex);
    return table.propPrior.ulPropTag == PR_INSTANCE_KEY ? words + L" after " + key(table.propPrior) : words;
  }

  const Act act_;
  sdk::Lock lock_;
  std::vector<std::wstring> told_;
  size_t calls_ = 0;
  ULONG lastType_ = 0;
  DWORD thread_ = 0;
};

}  // namespace orv::test
