#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

#include "setting.h"
#include "store/calendar_store.h"

// The files that measurements share: each is made when it is first asked for, in a process of its own so that the
// memory for that is given back.
namespace orlocal::bench {

/// A calendar file with so many events.
std::filesystem::path calendarFile(const Setting& setting, std::size_t events);
/// A store with the events of that file. Nobody writes into it.
std::filesystem::path storeFile(const Setting& setting, std::size_t events);
/// A floor's file (see `Floor`) with the occurrences of that store that overlap the year 2026.
std::filesystem::path floorFile(const Setting& setting, std::size_t events);
/// A fresh copy of that store for one who writes.
std::filesystem::path copyOfStore(const Setting& setting, std::size_t events, const std::string& name);

/// Makes the plug-in open that store from now on, in this process and its children.
void useStore(const std::filesystem::path& file);
void removeStore(const std::filesystem::path& file);

/// Throws when it cannot be opened.
std::unique_ptr<store::CalendarStore> openStore(const std::filesystem::path& file);
/// Imports a calendar file into a store; returns how many items the store took. Throws when one was refused.
std::size_t importFile(const std::filesystem::path& store, const std::filesystem::path& calendar);

std::string contentOf(const std::filesystem::path& file);

}  // namespace orlocal::bench
