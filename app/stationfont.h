#pragma once

namespace outpost
{

// Sets the application's font: the platform's own interface face where it is installed, else the
// system's general family, 12 pixels high. Needs the application object.
void setStationFont();

} // namespace outpost
