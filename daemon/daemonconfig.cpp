#include "daemon/daemonconfig.h"

#include <tuple>

namespace outpost
{

namespace
{
auto keys(const DecoderConfig &decoder)
{
    return std::tie(decoder.jt9, decoder.passes, decoder.atOnce, decoder.split);
}

auto keys(const ReceiverConfig &receiver)
{
    return std::tie(receiver.name, receiver.host, receiver.port, receiver.schedule, receiver.user,
                    receiver.passwordFile, receiver.compression, receiver.lowHz, receiver.highHz);
}

auto keys(const BridgeConfig &bridge)
{
    return std::tie(bridge.name, bridge.port, bridge.mhz, bridge.frequencyFile);
}

auto keys(const WsjtxConfig &wsjtx)
{
    return std::tie(wsjtx.targets, wsjtx.interface, wsjtx.ttl, wsjtx.id);
}

auto keys(const AllTxtConfig &allTxt)
{
    return std::tie(allTxt.folder, allTxt.fileName, allTxt.split);
}
} // namespace

bool DecoderConfig::operator==(const DecoderConfig &other) const
{
    return keys(*this) == keys(other);
}

bool ReceiverConfig::operator==(const ReceiverConfig &other) const
{
    return keys(*this) == keys(other);
}

bool BridgeConfig::operator==(const BridgeConfig &other) const
{
    return keys(*this) == keys(other);
}

bool WsjtxTarget::operator==(const WsjtxTarget &other) const
{
    return host == other.host && port == other.port;
}

bool WsjtxConfig::operator==(const WsjtxConfig &other) const
{
    return keys(*this) == keys(other);
}

bool AllTxtConfig::operator==(const AllTxtConfig &other) const
{
    return keys(*this) == keys(other);
}

} // namespace outpost
