// The decoder of the soak test: called like jt9, it reports the same few signals in every period's
// band without spending time on decoding.
// --ft8 -d DEPTH -L LOW -H HIGH …/WORKER_yyyyMMdd_HHmmss_S…/pelq_ft8_slot.wav

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char **argv)
{
    if (argc != 9) {
        return 2;
    }
    const int lowHz = std::atoi(argv[5]);
    const char *worker = std::strstr(argv[8], "WORKER_");
    const char *wav = std::strrchr(argv[8], '/');
    if (worker == nullptr || wav == nullptr || std::strlen(worker) < 22) {
        return 2;
    }
    constexpr int signals = 6;
    for (int i = 0; i < signals; ++i) {
        std::printf("%.6s %3d %4.1f %4d ~  CQ K%dA%c%c FN42\n", worker + 16, -20 + i, 0.1 * i,
                    lowHz + 50 + 100 * i, i, 'A' + lowHz / 100, 'A' + i);
    }
    std::puts("<DecodeFinished>   0   6        0");
    return 0;
}
