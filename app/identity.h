#pragma once

namespace outpost
{

// Tells Qt who the program is: the names that its data folder is made of, its desktop file and
// its icon. Needs the application object.
void setIdentity();

} // namespace outpost
