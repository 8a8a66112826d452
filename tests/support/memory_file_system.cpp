#include "tests/support/memory_file_system.h"

#include <algorithm>

#include "platform/error.h"
#include "text/text.h"

namespace korvex {
namespace {

[[noreturn]] void Raise(int number, const std::string& path) {
  throw Error(number, StandardErrorText(number) + ": " + path);
}

}  // namespace

class MemoryFileSystem::Appending : public AppendFile {
 public:
  Appending(MemoryFileSystem& files, std::string path) : files_(files), path_(std::move(path)) {}

  void Write(std::string_view bytes) override {
    if (!files_.FileExists(path_)) Raise(error_number::kDeviceIo, path_);
    files_.Append(bytes, files_.nodes_[files_.Key(path_)].content, path_);
  }

 private:
  MemoryFileSystem& files_;
  std::string path_;
};

class MemoryFileSystem::Replacing : public ReplacementFile {
 public:
  Replacing(MemoryFileSystem& files, std::string path) : files_(files), path_(std::move(path)) {}

  void Write(std::span<const std::byte> bytes) override {
    files_.Append({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, content_, path_);
  }
  void Commit() override { files_.Put(path_, std::move(content_)); }
  void CommitAsNew() override {
    if (files_.FileExists(path_)) Raise(error_number::kFileExists, path_);
    Commit();
  }

 private:
  MemoryFileSystem& files_;
  std::string path_;
  std::string content_;
};

MemoryFileSystem::MemoryFileSystem(PathStyle style) : style_(style) {
  AddFolder(DefaultFolder());
  if (style_ == PathStyle::kLinux) AddFolder(DefaultTempFolder());
}

char MemoryFileSystem::Separator() const {
  return style_ == PathStyle::kWindows ? '\\' : '/';
}

std::string MemoryFileSystem::DriveName(std::string_view path) const {
  if (style_ == PathStyle::kLinux) return "";
  if (path.size() >= 2 && path[1] == ':') return std::string(path.substr(0, 2));
  const std::size_t server_end = path.starts_with("\\\\") ? path.find('\\', 2) : path.npos;
  if (server_end == path.npos || server_end == 2) return "";
  return std::string(path.substr(0, path.find('\\', server_end + 1)));
}

std::vector<std::string> MemoryFileSystem::Drives() const {
  std::vector<std::string> drives;
  for (const auto& [key, node] : nodes_) {
    if (node.path == Root(node.path) && !node.path.starts_with("\\\\")) drives.push_back(node.path);
  }
  return drives;
}

std::string MemoryFileSystem::DefaultFolder() const {
  return style_ == PathStyle::kWindows ? "C:\\" : "/home/user";
}

std::string MemoryFileSystem::DefaultTempFolder() const {
  return style_ == PathStyle::kWindows ? "C:\\TEMP" : "/tmp";
}

std::string MemoryFileSystem::AbsolutePath(std::string_view path) const {
  const std::string separator(1, Separator());
  std::string native(path);
  if (style_ == PathStyle::kWindows) std::replace(native.begin(), native.end(), '/', '\\');
  const bool is_relative = DriveName(native).empty() && !native.starts_with(separator);
  if (is_relative) native = DefaultFolder() + separator + native;
  std::string drive = DriveName(native);
  std::vector<std::string> parts;
  for (std::string& part : Split(native.substr(drive.size()), separator)) {
    if (part.empty() || part == ".") continue;
    if (part != "..") {
      parts.push_back(std::move(part));
    } else if (!parts.empty()) {
      parts.pop_back();
    }
  }
  if (style_ == PathStyle::kWindows && drive.empty()) drive = "C:";
  return drive + separator + Join(parts, separator);
}

std::string MemoryFileSystem::Key(std::string_view path) const {
  const std::string absolute = AbsolutePath(path);
  return style_ == PathStyle::kWindows ? UpperCase(absolute) : absolute;
}

std::string MemoryFileSystem::Parent(const std::string& absolute) const {
  const std::string root = Root(absolute);
  const std::size_t last = absolute.rfind(Separator());
  return last < root.size() ? root : absolute.substr(0, last);
}

const MemoryFileSystem::Node* MemoryFileSystem::Find(std::string_view path) const {
  if (path.empty()) return nullptr;
  const auto found = nodes_.find(Key(path));
  return found == nodes_.end() ? nullptr : &found->second;
}

void MemoryFileSystem::Check(FileOperation operation, const std::string& path) const {
  const auto failure = failures_.find({operation, Key(path)});
  if (failure != failures_.end()) Raise(failure->second, path);
}

// What opening a file for writing finds out: a missing folder, or a folder in the file's place.
void MemoryFileSystem::CheckWritable(FileOperation operation, const std::string& path) const {
  if (path.empty()) Raise(error_number::kPathFileAccess, path);
  Check(operation, path);
  if (FolderExists(path)) Raise(error_number::kPathFileAccess, path);
  if (!FolderExists(Parent(AbsolutePath(path)))) Raise(error_number::kPathNotFound, path);
}

bool MemoryFileSystem::FileExists(const std::string& path) const {
  const Node* node = Find(path);
  return node && !node->is_folder && !path.ends_with(Separator());
}

bool MemoryFileSystem::FolderExists(const std::string& path) const {
  const Node* node = Find(path);
  return node && node->is_folder;
}

bool MemoryFileSystem::IsOneOf(const std::string& file, std::span<const std::string> others) const {
  return FileExists(file) && std::ranges::any_of(others, [&](const std::string& other) {
           return Find(other) == Find(file);
         });
}

std::optional<FileVersion> MemoryFileSystem::VersionOf(const std::string& path) const {
  if (!FileExists(path)) return std::nullopt;
  const Node& node = *Find(path);
  return FileVersion{.size = static_cast<std::int64_t>(node.content.size()),
                     .content_changed = node.version};
}

std::vector<FolderEntry> MemoryFileSystem::List(const std::string& folder) const {
  if (on_list) on_list(folder);
  if (!FolderExists(folder)) Raise(error_number::kPathNotFound, folder);
  Check(FileOperation::kList, folder);
  const std::string parent = Key(folder);
  std::vector<FolderEntry> entries;
  for (auto node = nodes_.rbegin(); node != nodes_.rend(); ++node) {
    if (node->first == parent || Parent(node->first) != parent) continue;
    const std::string& path = node->second.path;
    const std::string name = path.substr(path.rfind(Separator()) + 1);
    entries.push_back({name, node->second.is_folder, false, name.starts_with('.')});
  }
  return entries;
}

void MemoryFileSystem::ReadFile(const std::string& path, std::vector<std::byte>& content) const {
  ReadStart(path, std::string::npos, content);
}

void MemoryFileSystem::ReadStart(const std::string& path, std::size_t most,
                                 std::vector<std::byte>& content) const {
  const std::string_view text = std::string_view(Content(path)).substr(0, most);
  Check(FileOperation::kRead, path);
  ++reads_[Key(path)];
  const auto* bytes = reinterpret_cast<const std::byte*>(text.data());
  content.assign(bytes, bytes + text.size());
}

std::unique_ptr<AppendFile> MemoryFileSystem::OpenForAppending(const std::string& path) {
  CheckWritable(FileOperation::kAppend, path);
  if (!FileExists(path)) Put(path, "");
  return std::make_unique<Appending>(*this, path);
}

std::unique_ptr<ReplacementFile> MemoryFileSystem::Replace(const std::string& path) {
  CheckWritable(FileOperation::kReplace, path);
  return std::make_unique<Replacing>(*this, path);
}

void MemoryFileSystem::CreateFolder(const std::string& path) {
  Check(FileOperation::kCreateFolder, path);
  if (FolderExists(path)) return;
  if (Find(path)) Raise(error_number::kPathFileAccess, path);
  if (!FolderExists(Parent(AbsolutePath(path)))) Raise(error_number::kPathNotFound, path);
  AddFolder(path);
}

void MemoryFileSystem::DeleteFile(const std::string& path) {
  if (!FileExists(path)) Raise(error_number::kFileNotFound, path);
  Check(FileOperation::kDelete, path);
  nodes_.erase(Key(path));
}

void MemoryFileSystem::AddFolder(const std::string& path) {
  const std::string absolute = AbsolutePath(path);
  if (absolute != Root(absolute)) AddFolder(Parent(absolute));
  nodes_.try_emplace(Key(absolute), Node{absolute, true});
}

void MemoryFileSystem::AddFile(const std::string& path, std::string_view content) {
  AddFolder(Parent(AbsolutePath(path)));
  Put(path, std::string(content));
}

void MemoryFileSystem::Remove(const std::string& path) {
  const std::string key = Key(path);
  const std::string below = key + Separator();
  std::erase_if(
      nodes_, [&](const auto& node) { return node.first == key || node.first.starts_with(below); });
}

const std::string& MemoryFileSystem::Content(const std::string& path) const {
  if (!FileExists(path)) Raise(error_number::kFileNotFound, path);
  return Find(path)->content;
}

void MemoryFileSystem::Fail(FileOperation operation, const std::string& path, int error_number) {
  failures_[{operation, Key(path)}] = error_number;
}

void MemoryFileSystem::Deny(const std::string& path) {
  using enum FileOperation;
  for (const FileOperation operation : {kList, kRead, kAppend, kReplace, kCreateFolder, kDelete})
    Fail(operation, path, error_number::kPermissionDenied);
}

void MemoryFileSystem::Put(const std::string& path, std::string content) {
  Node& node = nodes_[Key(path)];
  if (node.path.empty()) node.path = AbsolutePath(path);
  node.content = std::move(content);
  node.version = ++last_version_;
}

void MemoryFileSystem::Append(std::string_view bytes, std::string& content,
                              const std::string& path) {
  const std::size_t fits = std::min(space_, bytes.size());
  content += bytes.substr(0, fits);
  space_ -= fits;
  if (fits < bytes.size()) Raise(error_number::kDiskFull, path);
}

}  // namespace korvex
