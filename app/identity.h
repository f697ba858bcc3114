#pragma once

namespace outpost
{

// Sets the names that determine the data folder, the desktop file name and the icon. Requires the
// application object.
void setIdentity();

} // namespace outpost
