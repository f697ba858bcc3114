#pragma once

class QWidget;

namespace outpost
{

class ProfileStore;

// The profile entries of the File menu. They show their dialogs and errors over `window`. Opening a
// profile only changes the store's values; it does not connect.
void openProfile(QWidget *window, ProfileStore *profiles);
void saveProfile(QWidget *window, ProfileStore *profiles);
void saveProfileAs(QWidget *window, ProfileStore *profiles);

} // namespace outpost
