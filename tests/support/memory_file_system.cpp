#include "tests/support/memory_file_system.h"

#include <algorithm>

#include "platform/error.h"
#include "util/text.h"

namespace korvex {
namespace {

constexpr FileOperation kAllOperations[] = {FileOperation::kList,         FileOperation::kRead,
                                            FileOperation::kAppend,       FileOperation::kReplace,
                                            FileOperation::kCreateFolder, FileOperation::kDelete};

[[noreturn]] void Raise(int number, const std::string& path) {
  throw Error(number, StandardErrorText(number) + ": " + path);
}

class MemoryAppendFile : public AppendFile {
 public:
  MemoryAppendFile(MemoryFileSystem& files, std::string path)
      : files_(files), path_(std::move(path)) {}

  void Write(std::string_view bytes) override { files_.AppendBytes(path_, bytes); }

 private:
  MemoryFileSystem& files_;
  std::string path_;
};

class MemoryReplacementFile : public ReplacementFile {
 public:
  MemoryReplacementFile(MemoryFileSystem& files, std::string path)
      : files_(files), path_(std::move(path)) {}

  void Write(std::span<const std::byte> bytes) override {
    files_.TakeSpace(path_, bytes.size());
    content_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }
  void Commit() override { files_.PutFile(path_, std::move(content_)); }

 private:
  MemoryFileSystem& files_;
  std::string path_;
  std::string content_;
};

}  // namespace

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
  if (!path.starts_with("\\\\")) return "";
  const std::size_t server_end = path.find('\\', 2);
  if (server_end == std::string_view::npos || server_end == 2) return "";
  const std::size_t share_end = path.find('\\', server_end + 1);
  return std::string(path.substr(0, share_end));
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
  std::string native(path);
  if (style_ == PathStyle::kWindows) std::replace(native.begin(), native.end(), '/', '\\');
  const char separator = Separator();
  std::string drive = DriveName(native);
  std::string rest = native.substr(drive.size());
  if (drive.empty() && !rest.starts_with(separator))
    rest = DefaultFolder() + separator + rest;  // relative
  if (style_ == PathStyle::kWindows && drive.empty()) {
    drive = "C:";
    if (rest.starts_with(drive)) rest.erase(0, 2);
  }

  std::vector<std::string> parts;
  for (std::string& part : Split(rest, std::string_view(&separator, 1))) {
    if (part.empty() || part == ".") continue;
    if (part != "..") {
      parts.push_back(std::move(part));
    } else if (!parts.empty()) {
      parts.pop_back();
    }
  }
  return drive + separator + Join(parts, std::string_view(&separator, 1));
}

std::string MemoryFileSystem::Key(std::string_view path) const {
  const std::string absolute = AbsolutePath(path);
  return style_ == PathStyle::kWindows ? UpperCase(absolute) : absolute;
}

std::string MemoryFileSystem::Root(std::string_view absolute) const {
  return DriveName(absolute) + Separator();
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

bool MemoryFileSystem::IsSameFile(const std::string& a, const std::string& b) const {
  return FileExists(a) && Find(a) == Find(b);
}

std::vector<FolderEntry> MemoryFileSystem::List(const std::string& folder) const {
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
  const std::string& text = Content(path);
  Check(FileOperation::kRead, path);
  const auto* bytes = reinterpret_cast<const std::byte*>(text.data());
  content.assign(bytes, bytes + text.size());
}

std::unique_ptr<AppendFile> MemoryFileSystem::OpenForAppending(const std::string& path) {
  CheckWritable(FileOperation::kAppend, path);
  if (!FileExists(path)) PutFile(path, "");
  return std::make_unique<MemoryAppendFile>(*this, path);
}

std::unique_ptr<ReplacementFile> MemoryFileSystem::Replace(const std::string& path) {
  CheckWritable(FileOperation::kReplace, path);
  return std::make_unique<MemoryReplacementFile>(*this, path);
}

void MemoryFileSystem::CreateFolder(const std::string& path) {
  Check(FileOperation::kCreateFolder, path);
  if (FolderExists(path)) return;
  const std::string absolute = AbsolutePath(path);
  if (Find(path)) Raise(error_number::kPathFileAccess, path);
  if (!FolderExists(Parent(absolute))) Raise(error_number::kPathNotFound, path);
  nodes_[Key(path)] = {absolute, true};
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
  PutFile(path, std::string(content));
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
  for (const FileOperation operation : kAllOperations)
    Fail(operation, path, error_number::kPermissionDenied);
}

void MemoryFileSystem::LimitSpace(std::size_t bytes) {
  limited_ = true;
  space_ = bytes;
}

void MemoryFileSystem::AppendBytes(const std::string& path, std::string_view bytes) {
  if (!FileExists(path)) Raise(error_number::kDeviceIo, path);
  std::string& content = nodes_[Key(path)].content;
  const std::size_t fits = limited_ ? std::min(space_, bytes.size()) : bytes.size();
  content.append(bytes.substr(0, fits));
  TakeSpace(path, bytes.size());
}

void MemoryFileSystem::TakeSpace(const std::string& path, std::size_t bytes) {
  if (!limited_) return;
  const bool enough = bytes <= space_;
  space_ -= std::min(space_, bytes);
  if (!enough) Raise(error_number::kDiskFull, path);
}

void MemoryFileSystem::PutFile(const std::string& path, std::string content) {
  Node& node = nodes_[Key(path)];
  if (node.path.empty()) node.path = AbsolutePath(path);
  node.content = std::move(content);
}

}  // namespace korvex
