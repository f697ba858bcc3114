#pragma once

class QWidget;

namespace outpost
{

class ProfileStore;

// The profile entries of the File menu: they ask for a file over `window`, and tell there what
// failed. A profile that is opened changes the store's values only; nothing connects.
void openProfile(QWidget *window, ProfileStore *profiles);
void saveProfile(QWidget *window, ProfileStore *profiles);
void saveProfileAs(QWidget *window, ProfileStore *profiles);

} // namespace outpost
