// The windows of large networks on the screen.
#pragma once

namespace vesk::bench {

// Registers the benchmarks. They use the one QApplication.
void add_editor_benchmarks();

} // namespace vesk::bench
