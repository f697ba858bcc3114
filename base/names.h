#pragma once

namespace outpost
{

// Sets the organisation and application names, on which the folders of data, settings and caches
// depend. All programs have the same, so that they find the same files.
void setNames();

} // namespace outpost
