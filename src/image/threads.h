// The engine's worker threads: a small pool, started once, that lets a job
// split its rows across the machine's cores. Each row is computed by one
// thread from the same inputs as on one thread, so the results are the
// same bytes whatever the count. The progress box stays on the calling
// thread: it alone is stepped and pumped, with counts that only rise, and
// its Cancel stops every band at a row boundary.
#pragma once

#include <cstdint>
#include <functional>

namespace lv {

// The threads a job may use: LUMIVUE_THREADS=N when set (1 turns the pool
// off), else the machine's cores, at most 16.
int32_t ThreadCount();
// Sets the count for the rest of the run (tests); 0 goes back to the rule
// above.
void SetThreadCount(int32_t count);

// Calls `row(r)` for every r in [0, count), in bands across the threads, the
// calling thread taking the first band. After each of its own rows the
// calling thread calls `step(done)`, done being the rows finished so far by
// all bands less one (so the last step is count - 1), and once more while
// it waits for the others; a non-zero result stops every band before its
// next row and is returned. `row` must touch only what belongs to its row.
int32_t ParallelRows(int32_t count, const std::function<void(int32_t row)>& row,
                     const std::function<int32_t(int32_t done)>& step);

}  // namespace lv
