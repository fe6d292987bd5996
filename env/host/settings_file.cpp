#include "env/host/settings_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace env {

namespace {

class SettingsFile : public SettingsStore {
 public:
  explicit SettingsFile (std::string Path) : Path_ (std::move (Path)) {}

  Load Read (std::string &Text) override {
    int Fd = ::open (Path_.c_str (), O_RDONLY | O_CLOEXEC);
    if (Fd < 0) return errno == ENOENT ? Load::Missing : Load::Unreadable;
    struct stat St;
    bool Ok = ::fstat (Fd, &St) == 0 && S_ISREG (St.st_mode) && static_cast<uint64_t> (St.st_size) <= kMaxSettingsText;
    if (Ok) {
      Text.resize (static_cast<size_t> (St.st_size));
      size_t Done = 0;
      while (Ok && Done < Text.size ()) {
        ssize_t N = ::read (Fd, Text.data () + Done, Text.size () - Done);
        if (N < 0 && errno == EINTR) continue;
        Ok = N > 0;
        if (Ok) Done += static_cast<size_t> (N);
      }
    }
    ::close (Fd);
    return Ok ? Load::Read : Load::Unreadable;
  }

  bool Write (const std::string &Text) override {
    std::string Temp = Path_ + ".tmp" + std::to_string (static_cast<long> (::getpid ()));
    int Fd = ::open (Temp.c_str (), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (Fd < 0) return false;
    size_t Done = 0;
    bool Ok = true;
    while (Ok && Done < Text.size ()) {
      ssize_t N = ::write (Fd, Text.data () + Done, Text.size () - Done);
      if (N < 0 && errno == EINTR) continue;
      Ok = N > 0;
      if (Ok) Done += static_cast<size_t> (N);
    }
    if (Ok && ::fsync (Fd) != 0) Ok = false;
    if (::close (Fd) != 0) Ok = false;
    if (Ok && ::rename (Temp.c_str (), Path_.c_str ()) != 0) Ok = false;
    if (!Ok) ::unlink (Temp.c_str ());
    return Ok;
  }

  std::string Name () const override { return "the settings file " + Path_; }

 private:
  std::string Path_;
};

}  // namespace

std::unique_ptr<SettingsStore> OpenSettingsFile (const std::string &Path) {
  return std::make_unique<SettingsFile> (Path);
}

}  // namespace env
