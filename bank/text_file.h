// Whole text files. Failures throw std::runtime_error with the file and the system's reason.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace qs::bank {

// Throws std::bad_alloc as well.
std::string readText(const std::filesystem::path& path);

// Writes over what is there.
void writeText(const std::filesystem::path& path, std::string_view text);

// Writes a file beside it, which then takes its place: when that fails, what was there stays.
void replaceText(const std::filesystem::path& path, std::string_view text);

// Renames a file or a folder, in place of a file that has the name.
void renameTo(const std::filesystem::path& path, const std::filesystem::path& target);

}  // namespace qs::bank
