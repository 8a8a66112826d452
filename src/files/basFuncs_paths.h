// Paths for display, and questions about files and folders. Paths are native.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace korvex {

struct FolderEntry;

// A folder shortened for display to drive, "\...\", parent and folder ("C:\...\Plates\Run1",
// "/.../Plates/Run1"); a root folder and a folder right below one stay as they are. `with_slash`
// makes sure of a separator at the end. Error 76 when the folder does not exist. For messages
// alone: control characters are escaped.
std::string ShortenPath(const std::string& path, bool with_slash);

// A file's full name with its folder shortened, the form in which messages name a workbook. Error
// 76 when its folder does not exist; a bare file name has none.
std::string GetDisplayPath(const std::string& full_name);

// Files in the folder and in all folders below it, without what lies behind links to folders. Error
// 6 beyond 32 bits. `on_folder` is called before each folder is listed; an error that it raises
// ends the count. With `entries`, for a folder that has been listed already.
int CountFiles(const std::string& folder, const std::function<void()>& on_folder = {});
int CountFiles(const std::string& folder, const std::vector<FolderEntry>& entries,
               const std::function<void()>& on_folder);

// Whether the file can be created or appended to, and if not, why. Leaves the disk as it was, and
// makes nothing under that name even for a moment.
bool FileIsWritable(const std::string& full_name, std::string* cause = nullptr);

}  // namespace korvex
