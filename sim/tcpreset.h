#pragma once

#include <QtGlobal>

namespace outpost
{

namespace sim
{

// Makes close() reset the TCP connection instead of ending it in order. Qt has no option for it.
void resetOnClose(qintptr socketDescriptor);

} // namespace sim

} // namespace outpost
