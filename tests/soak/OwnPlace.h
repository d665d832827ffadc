#pragma once

#include "support/TemporaryFolder.h"

#include <QByteArray>

#include <filesystem>
#include <string>

namespace quorbel::soak {

// Where a program works without touching what is anybody's. All of it before there are threads.

/// Gives this process and what it starts a file system of their own in a folder, of so many MiB in
/// memory, which nobody else sees and which ends with them. Says why it cannot be, or nothing.
std::string makeSmallDisk(const std::filesystem::path &folder, unsigned size);

/// From now on the user's home and all that is remembered there are in the folder "home" of it. A
/// second one, "files", is for what the user writes.
void makeHome(const testing::TemporaryFolder &own);

/// A platform for QT_QPA_PLATFORM with two screens beside one another, a large and a small one.
QByteArray twoScreens(const testing::TemporaryFolder &own);

}  // namespace quorbel::soak
