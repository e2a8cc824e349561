// What a process holds that grows when a library is loaded and freed again and again and leaves something behind.
#pragma once

#include <array>
#include <functional>
#include <string>

namespace orv::test {

// Thread-local slots (the more are taken the higher), handles of the kernel, loaded libraries, bytes of all heaps.
using ProcessCounts = std::array<long long, 4>;
ProcessCounts CountProcess();

// Windows and menus that a thread of this process may ask, and what is drawn with. Found by trying handles, of which the
// low ones are given out first.
struct WindowObjects {
  int user = 0, drawing = 0;
};
WindowObjects CountWindowObjects();

// What every one of several runs of the same work leaves behind, as "2 handles, 760 bytes"; empty when that is nothing.
// What the system makes late, a lock that is fought over for the first time, it makes once: it shows in one run and not
// in the others. Counted are thread-local slots, handles of the kernel, loaded libraries, and bytes of all heaps.
std::string LeftEveryTime(const std::function<void()>& work);

}  // namespace orv::test
