// The window's work with decodes and data files, compared with the minimum.

#include "app/startup.h"
#include "bench/compare.h"
#include "bench/windowbenches.h"
#include "fixture/home.h"

#include <QApplication>
#include <sys/resource.h>

namespace outpost
{

QStringList benchLines(int count)
{
    const QStringList messages = {
        QStringLiteral("CQ K1ABC FN42"), QStringLiteral("K1ABC W9XYZ EN37"),
        QStringLiteral("W9XYZ K1ABC -11"), QStringLiteral("K1ABC W9XYZ R-09"),
        QStringLiteral("CQ POTA LU8XGZ GF05")};
    QStringList lines;
    for (int i = 0; i < count; ++i) {
        lines.append(QStringLiteral("101530 %1 %2 %3 ~  %4")
                         .arg(i % 30 - 20, 3)
                         .arg((i % 20 - 10) / 10.0, 4, 'f', 1)
                         .arg(200 + i * 2700 / count, 4)
                         .arg(messages.at(i % messages.size())));
    }
    return lines;
}

namespace
{
void allowManySockets()
{
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}
} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    allowManySockets();
    testHome();
    const auto application = startApplication(argc, argv);
    registerTableBench(roundsAskedFor(argc, argv, 51));
    registerBroadcastBench(roundsAskedFor(argc, argv, 15));
    registerStoreBench(roundsAskedFor(argc, argv, 25));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
