#pragma once

namespace outpost
{

// Sets the application's font: the platform's own interface font if it is installed, else the
// system's general font; 12 pixels. Requires the application object.
void setStationFont();

} // namespace outpost
