// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Saving/FileAttributes.h"

#include <linux/limits.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

namespace ScEng {
namespace {

constexpr const char* kAccessList = "system.posix_acl_access";

bool IsNotAllowed(ErrorNumber error) {
  // EINVAL: an owner or group that has no number in this container.
  return error == EPERM || error == EACCES || error == EINVAL || error == ENOTSUP || error == ENOSYS;
}

/// Of security attributes only labels go along; the others speak of the old content.
bool IsCopied(std::string_view name) { return name.substr(0, 9) != "security." || name == "security.selinux"; }

ErrorNumber ReadNames(const std::filesystem::path& file, std::vector<std::string>& names) {
  // The system's own limits of a list of names and of a value.
  std::string list(XATTR_LIST_MAX, '\0');
  const ssize_t size = llistxattr(file.c_str(), list.data(), list.size());
  if (size < 0) return IsNotAllowed(errno) ? 0 : errno;
  list.resize(static_cast<std::size_t>(size));
  for (std::size_t start = 0; start < list.size(); start += names.back().size() + 1) {
    names.emplace_back(list.c_str() + start);
  }
  return 0;
}

/// `is_kept` tells whether the new file has the attribute.
ErrorNumber CopyAttribute(const std::filesystem::path& old_file, const char* name, int new_file, bool& is_kept) {
  std::vector<char> value(XATTR_SIZE_MAX);
  const ssize_t size = lgetxattr(old_file.c_str(), name, value.data(), value.size());
  if (size < 0) return IsNotAllowed(errno) || errno == ENODATA ? 0 : errno;
  is_kept = fsetxattr(new_file, name, value.data(), static_cast<std::size_t>(size), 0) == 0;
  return is_kept || IsNotAllowed(errno) ? 0 : errno;
}

/// The list that a new file takes over from its folder may let in others than the old file did.
ErrorNumber RemoveInheritedAccessList(int new_file) {
  if (fremovexattr(new_file, kAccessList) == 0 || errno == ENODATA || errno == ENOTSUP || errno == ENOSYS) return 0;
  return errno;
}

/// The group comes first, so that permissions never hold for another one, and the owner last, for only the owner may
/// set the rest.
class AttributeCopy {
 public:
  AttributeCopy(const std::filesystem::path& old_file, const struct stat& old, int new_file)
      : old_file_(old_file), old_(old), new_file_(new_file) {}

  ErrorNumber Run() {
    ErrorNumber failure = fstat(new_file_, &new_) == 0 ? 0 : errno;
    if (failure == 0) failure = CopyGroup();
    if (failure == 0) failure = RemoveInheritedAccessList(new_file_);
    if (failure == 0) failure = CopyExtendedAttributes();
    if (failure == 0) failure = CopyPermissions();
    if (failure == 0) failure = CopyOwner();
    return failure;
  }

 private:
  ErrorNumber CopyGroup() {
    constexpr auto kUnchanged = static_cast<uid_t>(-1);
    has_group_ = new_.st_gid == old_.st_gid || fchown(new_file_, kUnchanged, old_.st_gid) == 0;
    return has_group_ || IsNotAllowed(errno) ? 0 : errno;
  }

  ErrorNumber CopyExtendedAttributes() {
    std::vector<std::string> names;
    if (const ErrorNumber failure = ReadNames(old_file_, names)) return failure;
    for (const std::string& name : names) {
      if (!IsCopied(name)) continue;
      const bool is_list = name == kAccessList;
      bool is_kept = false;
      // An access control list says what the group may do, so it goes with the group.
      if (!is_list || has_group_) {
        if (const ErrorNumber failure = CopyAttribute(old_file_, name.c_str(), new_file_, is_kept)) return failure;
      }
      if (is_list && !is_kept) lacks_access_list_ = true;
    }
    return 0;
  }

  [[nodiscard]] mode_t GetPermissions() const {
    const mode_t permissions = old_.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
    if (lacks_access_list_) return permissions & S_IRWXU;
    if (has_group_) return permissions;
    const mode_t both = (permissions >> 3) & permissions & S_IRWXO;
    return (permissions & S_IRWXU) | (both << 3) | both;
  }

  ErrorNumber CopyPermissions() {
    // Some file systems give all files the same permissions and refuse to set them, be it to what they are.
    struct stat now {};
    if (fstat(new_file_, &now) != 0) return errno;
    if ((now.st_mode & ~static_cast<mode_t>(S_IFMT)) == GetPermissions()) return 0;
    return fchmod(new_file_, GetPermissions()) == 0 ? 0 : errno;
  }

  ErrorNumber CopyOwner() {
    constexpr auto kUnchanged = static_cast<gid_t>(-1);
    if (new_.st_uid == old_.st_uid || fchown(new_file_, old_.st_uid, kUnchanged) == 0 || IsNotAllowed(errno)) return 0;
    return errno;
  }

  const std::filesystem::path& old_file_;
  const struct stat& old_;
  int new_file_;
  struct stat new_ {};
  bool has_group_ = false;
  bool lacks_access_list_ = false;
};

}  // namespace

ErrorNumber CopyAttributes(const std::filesystem::path& old_file, const struct stat& old, int new_file) {
  return AttributeCopy(old_file, old, new_file).Run();
}

}  // namespace ScEng
