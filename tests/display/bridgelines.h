#pragma once

#include <QString>

namespace outpost
{

inline QString listeningOn(int port)
{
    return QStringLiteral("Local WSJT bridge listening on 127.0.0.1:%1.").arg(port);
}

} // namespace outpost
