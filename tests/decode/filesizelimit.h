#pragma once

#include <QtGlobal>
#include <csignal>
#include <sys/resource.h>

namespace outpost
{

// For its lifetime, writes of this process beyond `bytes` of a file fail.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit lower = {bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &lower);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }
    Q_DISABLE_COPY(FileSizeLimit)

private:
    rlimit before = {};
};

} // namespace outpost
