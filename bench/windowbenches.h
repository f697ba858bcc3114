#pragma once

#include <QStringList>

namespace outpost
{

// Register benchmarks with Google Benchmark, with this number of rounds each.
void registerTableBench(int rounds);
void registerBroadcastBench(int rounds);
void registerStoreBench(int rounds);

// This number of different jt9 lines, as in a crowded period.
QStringList benchLines(int count);

} // namespace outpost
