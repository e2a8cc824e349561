// Memory for the database engine. An index of words takes and gives back very many small blocks of mixed sizes; heaps
// that look through a list for a free block then spend a third of an import on it.
#pragma once

namespace book {

// Hands the engine an allocator that finds every block in constant time. Nothing where the engine is at work already.
void GiveEngineMemory() noexcept;

}  // namespace book
