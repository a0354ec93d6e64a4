// SPDX-License-Identifier: Apache-2.0
//
// What an overwritten file keeps, and what is not overwritten.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>

#include "Host/Files/FileSizeLimit.h"
#include "Host/Files/ImageFile.h"
#include "Host/Files/PathProblem.h"
#include "Tests/Support/SavingTesting.h"

namespace {

using ScEng::Status;
using ScEng::WriteWholeFile;
using Testing::Contains;
using Testing::MakeContent;
using Testing::ReadText;
using Testing::TemporaryFolder;
using Testing::WriteText;

using Names = std::vector<std::string>;

/// Restores the mask of permissions at the end of a scope.
class MaskScope {
 public:
  explicit MaskScope(mode_t mask) : before_(umask(mask)) {}
  ~MaskScope() { umask(before_); }
  MaskScope(const MaskScope&) = delete;
  MaskScope& operator=(const MaskScope&) = delete;

 private:
  mode_t before_;
};

struct stat LookAt(const std::filesystem::path& file) {
  struct stat now {};
  EXPECT_EQ(lstat(file.c_str(), &now), 0) << file;
  return now;
}

mode_t GetMode(const std::filesystem::path& file) { return LookAt(file).st_mode & 07777; }

/// Runs `work` in a process of its own as a user without privileges, if this one is the administrator. Its answer.
int RunUnprivileged(uid_t user, const auto& work) {
  const pid_t child = fork();
  if (child == 0) {
    if (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0) _exit(100);
    _exit(work() ? 0 : 1);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool IsAdministrator() { return geteuid() == 0; }

class KeptFile : public testing::Test {
 protected:
  void ExpectSaved(const std::filesystem::path& file, const std::string& content = "new") {
    const Status status = WriteWholeFile(file, content);
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
    EXPECT_EQ(ReadText(file), content);
  }

  /// Saving fails for this reason, and nothing changes.
  void ExpectRefused(const std::filesystem::path& file, const std::string& reason) {
    const Names before = folder_.List();
    const std::string message = WriteWholeFile(file, "new").GetMessage();
    // Of a long name the end is told.
    constexpr std::size_t kAlwaysTold = 100;
    const std::string name = file.string();
    const std::string end = name.substr(name.size() - std::min(name.size(), kAlwaysTold)) + "\": " + reason;
    EXPECT_TRUE(message.ends_with(end)) << message;
    EXPECT_TRUE(message.starts_with("cannot write \"")) << message;
    if (name.size() <= kAlwaysTold) {
      EXPECT_EQ(message, "cannot write \"" + end);
    }
    EXPECT_EQ(folder_.List(), before);
  }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_ / "file";
};

// ---- Permissions ----

TEST_F(KeptFile, KeepsItsPermissionsWhateverTheMask) {
  for (const mode_t mask : {0000U, 0022U, 0077U}) {
    const MaskScope scope(mask);
    for (const mode_t mode : {0600U, 0640U, 0664U, 0666U, 0755U, 0200U}) {
      WriteText(file_, "old");
      ASSERT_EQ(chmod(file_.c_str(), mode), 0);
      const Status status = WriteWholeFile(file_, "new");
      EXPECT_FALSE(status.IsError()) << status.GetMessage();
      EXPECT_EQ(GetMode(file_), mode);
      std::filesystem::remove(file_);
    }
  }
}

TEST_F(KeptFile, ANewFileFollowsTheMask) {
  const MaskScope scope(0027);
  ExpectSaved(file_);
  EXPECT_EQ(GetMode(file_), 0640U);
}

TEST_F(KeptFile, ANewContentRunsAsNobodyElse) {
  WriteText(file_, "old");
  ASSERT_EQ(chmod(file_.c_str(), 06755), 0);
  ExpectSaved(file_);
  EXPECT_EQ(GetMode(file_), 0755U);
}

TEST_F(KeptFile, KeepsOwnerAndGroupWhereTheProcessMaySetThem) {
  if (!IsAdministrator()) return;
  WriteText(file_, "old");
  ASSERT_EQ(chmod(file_.c_str(), 0640), 0);
  ASSERT_EQ(chown(file_.c_str(), 12345, 23456), 0);
  ExpectSaved(file_);
  EXPECT_EQ(LookAt(file_).st_uid, 12345U);
  EXPECT_EQ(LookAt(file_).st_gid, 23456U);
  EXPECT_EQ(GetMode(file_), 0640U);
}

TEST_F(KeptFile, WithoutItsGroupNobodyGainsAccess) {
  if (!IsAdministrator()) return;
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0777), 0);
  // Group and others keep what both had.
  const std::pair<mode_t, mode_t> kModes[] = {{0666, 0666}, {0662, 0622}, {0626, 0622}, {0602, 0600}, {0777, 0777}};
  for (const auto& [before, after] : kModes) {
    WriteText(file_, "old");
    ASSERT_EQ(chown(file_.c_str(), 12345, 23456), 0);
    ASSERT_EQ(chmod(file_.c_str(), before), 0);
    EXPECT_EQ(RunUnprivileged(4321, [&] { return !WriteWholeFile(file_, "new").IsError(); }), 0);
    EXPECT_EQ(ReadText(file_), "new");
    EXPECT_EQ(GetMode(file_), after);
    EXPECT_EQ(LookAt(file_).st_uid, 4321U);
    std::filesystem::remove(file_);
  }
}

// ---- Extended attributes ----

TEST_F(KeptFile, KeepsExtendedAttributes) {
  WriteText(file_, "old");
  const std::string note = "taken at noon";
  // There are file systems without them.
  if (setxattr(file_.c_str(), "user.note", note.data(), note.size(), 0) != 0) return;
  ASSERT_EQ(setxattr(file_.c_str(), "user.empty", "", 0, 0), 0);
  ExpectSaved(file_);
  char value[100];
  const ssize_t size = getxattr(file_.c_str(), "user.note", value, sizeof value);
  ASSERT_EQ(size, static_cast<ssize_t>(note.size()));
  EXPECT_EQ(std::string(value, note.size()), note);
  EXPECT_EQ(getxattr(file_.c_str(), "user.empty", value, sizeof value), 0);
}

/// Who may do what, as the system stores it.
struct AccessEntry {
  std::uint16_t tag;
  std::uint16_t permissions;
  std::uint32_t id;
};
constexpr std::uint16_t kTheOwner = 1;
constexpr std::uint16_t kUser = 2;
constexpr std::uint16_t kTheGroup = 4;
constexpr std::uint16_t kMask = 16;
constexpr std::uint16_t kOthers = 32;
constexpr std::uint32_t kNoId = 0xffffffff;

std::string MakeAccessList(const std::vector<AccessEntry>& entries) {
  const std::uint32_t version = 2;
  std::string list(sizeof version + entries.size() * sizeof(AccessEntry), '\0');
  std::memcpy(list.data(), &version, sizeof version);
  std::memcpy(list.data() + sizeof version, entries.data(), entries.size() * sizeof(AccessEntry));
  return list;
}

bool SetList(const std::filesystem::path& file, const char* name, const std::string& list) {
  return setxattr(file.c_str(), name, list.data(), list.size(), 0) == 0;
}

std::string GetAccessList(const std::filesystem::path& file) {
  char value[1000];
  const ssize_t size = getxattr(file.c_str(), "system.posix_acl_access", value, sizeof value);
  return size < 0 ? std::string{} : std::string(value, static_cast<std::size_t>(size));
}

const std::string kOneUserReads = MakeAccessList(
    {{kTheOwner, 6, kNoId}, {kUser, 4, 777}, {kTheGroup, 0, kNoId}, {kMask, 4, kNoId}, {kOthers, 0, kNoId}});

TEST_F(KeptFile, KeepsItsAccessControlList) {
  WriteText(file_, "old");
  if (!SetList(file_, "system.posix_acl_access", kOneUserReads)) return;
  const mode_t mode = GetMode(file_);
  EXPECT_EQ(mode, 0640U);
  ExpectSaved(file_);
  EXPECT_TRUE(GetAccessList(file_) == kOneUserReads);
  EXPECT_EQ(GetMode(file_), mode);
}

TEST_F(KeptFile, TheListOfItsFolderLetsNobodyIn) {
  WriteText(file_, "old");
  ASSERT_EQ(chmod(file_.c_str(), 0660), 0);
  if (!SetList(folder_.Path(), "system.posix_acl_default", kOneUserReads)) return;
  ExpectSaved(file_);
  EXPECT_TRUE(GetAccessList(file_).empty());
  EXPECT_EQ(GetMode(file_), 0660U);
  // A new file takes it over as every other.
  ExpectSaved(folder_ / "second");
  EXPECT_TRUE(GetAccessList(folder_ / "second") == kOneUserReads);
}

TEST_F(KeptFile, WithoutGroupAndListTheOwnerIsAlone) {
  if (!IsAdministrator()) return;
  WriteText(file_, "old");
  const std::string list = MakeAccessList(
      {{kTheOwner, 6, kNoId}, {kUser, 6, 4321}, {kTheGroup, 0, kNoId}, {kMask, 6, kNoId}, {kOthers, 4, kNoId}});
  if (!SetList(file_, "system.posix_acl_access", list)) return;
  ASSERT_EQ(chown(file_.c_str(), 12345, 23456), 0);
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0777), 0);
  EXPECT_EQ(RunUnprivileged(4321, [&] { return !WriteWholeFile(file_, "new").IsError(); }), 0);
  EXPECT_EQ(ReadText(file_), "new");
  EXPECT_EQ(GetMode(file_), 0600U);
  EXPECT_TRUE(GetAccessList(file_).empty());
}

// ---- Names ----

TEST_F(KeptFile, AllNamesShowTheNewContent) {
  WriteText(file_, MakeContent(200'000, 'o'));
  std::filesystem::create_hard_link(file_, folder_ / "second");
  std::filesystem::create_directory(folder_ / "sub");
  std::filesystem::create_hard_link(file_, folder_ / "sub" / "third");
  const ino_t inode = LookAt(file_).st_ino;
  for (const std::string& content : {MakeContent(300'000, 'n'), std::string("short"), std::string()}) {
    ExpectSaved(file_, content);
    EXPECT_EQ(ReadText(folder_ / "second"), content);
    EXPECT_EQ(ReadText(folder_ / "sub" / "third"), content);
  }
  EXPECT_EQ(LookAt(file_).st_ino, inode);
  EXPECT_EQ(LookAt(file_).st_nlink, 3U);
  EXPECT_EQ(folder_.List(), (Names{"file", "second", "sub"}));
}

TEST_F(KeptFile, NamesAreAsLongAsTheSystemAllows) {
  ExpectSaved(folder_ / std::string(255, 'n'));
  ExpectRefused(folder_ / std::string(256, 'n'), "File name too long");
}

TEST_F(KeptFile, LinksThatLeadNowhereAreTold) {
  std::filesystem::create_symlink("b", folder_ / "a");
  std::filesystem::create_symlink("a", folder_ / "b");
  ExpectRefused(folder_ / "a", "Too many levels of symbolic links");
  std::filesystem::create_symlink("none/file", folder_ / "c");
  ExpectRefused(folder_ / "c", "the folder \"" + (folder_ / "none").string() + "\" does not exist");
}

TEST_F(KeptFile, ANulCharacterNamesNoFile) {
  const std::filesystem::path path = (folder_ / "file").string() + std::string("\0.txt", 5);
  const std::string message = WriteWholeFile(path, "new").GetMessage();
  EXPECT_EQ(message, "cannot write \"" + file_.string() + "\\u0000.txt\": its name holds a NUL character");
  EXPECT_TRUE(folder_.List().empty());
  EXPECT_EQ(ScEng::FindPathProblem(path), "its name holds a NUL character");
  EXPECT_EQ(ScEng::FindPathProblem(""), "it has no name");
  EXPECT_EQ(ScEng::FindPathProblem("a b/\"c\""), "");
}

TEST_F(KeptFile, MessagesHoldNoControlCharacters) {
  const auto name = folder_ / (std::string(300, 'n') + "a\n\x1b[1mb\x7fn");
  const std::string message = WriteWholeFile(name, "new").GetMessage();
  EXPECT_TRUE(Contains(message, "a\\u000a\\u001b[1mb\\u007fn"));
}

// ---- What is not overwritten ----

TEST_F(KeptFile, ReadOnlyFilesStayForEverybody) {
  WriteText(file_, "old");
  ASSERT_EQ(chmod(file_.c_str(), 0444), 0);
  ExpectRefused(file_, "it is read-only");
  EXPECT_EQ(ReadText(file_), "old");
  EXPECT_EQ(GetMode(file_), 0444U);
  std::filesystem::create_symlink("file", folder_ / "link");
  ExpectRefused(folder_ / "link", "it is read-only");
}

TEST_F(KeptFile, FilesOfOthersStay) {
  if (!IsAdministrator()) return;
  WriteText(file_, "old");
  ASSERT_EQ(chmod(file_.c_str(), 0644), 0);
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0777), 0);
  const std::string expected = "cannot write \"" + file_.string() + "\": Permission denied";
  EXPECT_EQ(RunUnprivileged(4321, [&] { return WriteWholeFile(file_, "new").GetMessage() == expected; }), 0);
  EXPECT_EQ(ReadText(file_), "old");
  EXPECT_EQ(folder_.List(), Names{"file"});
}

TEST_F(KeptFile, FoldersThatMayNotBeWrittenAreNamed) {
  if (!IsAdministrator()) return;
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0755), 0);
  const std::string expected = "cannot write \"" + file_.string() + "\": no file can be made in the folder \"" +
                               folder_.Path().string() + "\": Permission denied";
  EXPECT_EQ(RunUnprivileged(4321, [&] { return WriteWholeFile(file_, "new").GetMessage() == expected; }), 0);
  EXPECT_TRUE(folder_.List().empty());
}

TEST_F(KeptFile, FoldersThatCannotBeListedCanBeWritten) {
  if (!IsAdministrator()) return;
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0733), 0);
  EXPECT_EQ(RunUnprivileged(4321, [&] { return !WriteWholeFile(file_, "new").IsError(); }), 0);
  EXPECT_EQ(folder_.List(), Names{"file"});
}

TEST_F(KeptFile, OnlyRegularFilesAreWritten) {
  std::filesystem::create_directory(folder_ / "folder");
  ExpectRefused(folder_ / "folder", "it is a folder");
  ExpectRefused(folder_ / "folder" / "", "it is a folder");
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  ExpectRefused(folder_ / "pipe", "it is a pipe and not a regular file");
  ExpectRefused("/dev/full", "it is a device and not a regular file");
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string name = folder_ / "socket";
  ASSERT_LT(name.size(), sizeof address.sun_path);
  std::strncpy(address.sun_path, name.c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ExpectRefused(name, "it is a socket and not a regular file");
  close(listener);
}

TEST_F(KeptFile, PathsThatEndInNoFileAreRefused) {
  WriteText(file_, "old");
  ExpectRefused("", "it has no name");
  ExpectRefused(file_ / "below", "\"" + file_.string() + "\" is not a folder");
  ExpectRefused(folder_ / "none" / "", "the folder \"" + (folder_ / "none").string() + "\" does not exist");
}

TEST_F(KeptFile, BeyondTheLargestFileTheOldContentStays) {
  for (const bool has_two_names : {false, true}) {
    WriteText(file_, "old");
    if (has_two_names) std::filesystem::create_hard_link(file_, folder_ / "second");
    const pid_t child = fork();
    if (child == 0) {
      ScEng::CatchFileSizeSignal();
      const rlimit limit{1000, 1000};
      if (setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(2);
      const Status status = WriteWholeFile(file_, std::string(1001, 'n'));
      _exit(status.IsError() && !WriteWholeFile(file_, std::string(1000, 'm')).IsError() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(ReadText(file_), std::string(1000, 'm'));
    EXPECT_EQ(folder_.List().size(), has_two_names ? 2U : 1U);
  }
}

// ---- Several writers ----

TEST_F(KeptFile, SeveralWritersLeaveOneWholeFile) {
  const std::string contents[] = {MakeContent(200'000, 'x'), MakeContent(70'000, 'y'), MakeContent(1, 'z')};
  for (const bool has_two_names : {false, true}) {
    WriteText(file_, contents[0]);
    if (has_two_names) std::filesystem::create_hard_link(file_, folder_ / "second");
    std::vector<std::thread> writers;
    for (const std::string& content : contents) {
      writers.emplace_back([&] {
        for (int i = 0; i < 15; ++i) EXPECT_FALSE(WriteWholeFile(file_, content).IsError());
      });
    }
    for (std::thread& writer : writers) writer.join();
    const std::string now = ReadText(file_);
    EXPECT_TRUE(now == contents[0] || now == contents[1] || now == contents[2]);
    EXPECT_EQ(folder_.List().size(), has_two_names ? 2U : 1U);
  }
}

TEST_F(KeptFile, ReadersNeverSeeAPart) {
  const std::string first = MakeContent(300'000, 'a');
  const std::string second = MakeContent(100'000, 'b');
  WriteText(file_, first);
  std::thread writer([&] {
    for (int i = 0; i < 30; ++i) EXPECT_FALSE(WriteWholeFile(file_, i % 2 == 0 ? second : first).IsError());
  });
  for (int i = 0; i < 300; ++i) {
    const std::string now = ReadText(file_);
    EXPECT_TRUE(now == first || now == second);
  }
  writer.join();
}

}  // namespace
