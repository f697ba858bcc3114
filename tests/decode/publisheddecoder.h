#pragma once

#include "tests/fixture/scripteddecoder.h"

namespace outpost
{

// For its lifetime, the environment names this decoder.
class PublishedDecoder : public ScriptedDecoder
{
public:
    explicit PublishedDecoder(const QString &script = {}) : ScriptedDecoder(script.toUtf8())
    {
        qputenv("PELQ_JT9_PATH", path().toLocal8Bit());
    }
    ~PublishedDecoder() { qunsetenv("PELQ_JT9_PATH"); }
    Q_DISABLE_COPY(PublishedDecoder)
};

} // namespace outpost
