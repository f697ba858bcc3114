#pragma once

#include <QtGlobal>

namespace outpost
{

namespace sim
{

// Makes closing this socket reset the connection instead of ending it in order; the toolkit has no
// option for it.
void resetOnClose(qintptr socketDescriptor);

} // namespace sim

} // namespace outpost
