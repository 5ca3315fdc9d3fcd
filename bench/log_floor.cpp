// The least that appending modem logs takes: log_floor REQUESTS RESPONSES PACKAGES SIZES. For each request
// PACKAGES packages, each with a packet for each of the comma-separated SIZES, go through a file of their own
// to the end of the current log in the handset folder HANDSET_ROOT; then one byte answers.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr const char* kLogOnHandset = "/data/adam/adam_20240131235959.log";

struct Paths {
  explicit Paths(const std::string& root)
      : folder(root + "/data/adam"),
        link(folder + "/.0001"),
        log(root + kLogOnHandset),
        package(folder + "/~adam0001.log") {}

  std::string folder;
  std::string link;
  std::string log;
  std::string package;
};

bool beginLog(const Paths& paths) {
  if (mkdir(paths.folder.c_str(), 0750) != 0) return false;
  const int log = open(paths.log.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0740);
  return close(log) == 0 && symlink(kLogOnHandset, paths.link.c_str()) == 0;
}

bool writeAll(int file, const char* bytes, size_t size) {
  return write(file, bytes, size) == static_cast<ssize_t>(size);
}

/// The package's file as its last packet leaves it, open; −1 after a failure.
int collect(const Paths& paths, const std::vector<std::string>& packets) {
  int package = -1;
  int begin_or_go_on = O_TRUNC;
  for (const std::string& packet : packets) {
    if (package >= 0) close(package);
    package = open(paths.package.c_str(), O_RDWR | O_CREAT | begin_or_go_on | O_CLOEXEC, 0740);
    begin_or_go_on = O_APPEND;
    if (!writeAll(package, packet.data(), packet.size())) return -1;
  }
  return package;
}

bool append(const Paths& paths) {
  struct stat status {};
  char target[150];
  if (stat(paths.package.c_str(), &status) != 0 ||
      readlink(paths.link.c_str(), target, sizeof target - 1) < 0 ||
      // Once for whether there is such a log, once for its size.
      stat(paths.log.c_str(), &status) != 0 || stat(paths.log.c_str(), &status) != 0)
    return false;
  const int log = open(paths.log.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0770);
  const int package = open(paths.package.c_str(), O_RDONLY | O_CLOEXEC);
  if (status.st_size == 0) {
    (void)!fchown(log, getuid(), 2002);
    (void)fchmod(log, 0660);
  }
  char chunk[256];
  ssize_t count = 0;
  while ((count = read(package, chunk, sizeof chunk)) > 0)
    if (!writeAll(log, chunk, static_cast<size_t>(count))) return false;
  if (count < 0 || fsync(log) != 0 || fsync(package) != 0) return false;
  close(package);
  close(log);
  return unlink(paths.package.c_str()) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  const char* root = std::getenv("HANDSET_ROOT");
  if (argc < 5 || root == nullptr) return 2;
  const int requests = std::atoi(argv[1]);
  const int responses = std::atoi(argv[2]);
  const int packages = std::atoi(argv[3]);
  std::vector<std::string> packets;
  std::istringstream sizes(argv[4]);
  for (std::string size; std::getline(sizes, size, ',');)
    packets.emplace_back(std::stoul(size), 'x');

  const Paths paths(root);
  if (!beginLog(paths)) return 3;
  char request[16];
  while (read(requests, request, sizeof request) > 0) {
    for (int i = 0; i < packages; ++i) {
      const int last = collect(paths, packets);
      if (last < 0 || !append(paths)) return 4;
      close(last);
    }
    if (!writeAll(responses, "", 1)) return 5;
  }
  return 0;
}
