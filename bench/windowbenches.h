#pragma once

#include <QStringList>

namespace outpost
{

// Each registers its benchmarks with Google Benchmark, `rounds` rounds each.
void registerTableBench(int rounds);
void registerBroadcastBench(int rounds);
void registerStoreBench(int rounds);

// So many jt9 lines of a crowded period, all different.
QStringList benchLines(int count);

} // namespace outpost
