#include "output_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

// The unfinished file, for the signal handler, which may do no more than call unlink.
char unfinished[PATH_MAX];
volatile sig_atomic_t hasUnfinished = 0;

void removeAndEnd(int signal) {
    if (hasUnfinished)
        unlink(unfinished);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

class UnfinishedFile {
  public:
    /** Beside `target`, which `path` leads to; the path is for messages. */
    UnfinishedFile(const std::string& path, const std::filesystem::path& target) {
        const std::string name = (target.parent_path() / ".vek-XXXXXX").string();
        if (name.size() >= sizeof unfinished)
            throw Failure(path, "the name is too long");
        std::memcpy(unfinished, name.c_str(), name.size() + 1);
        for (int signal : {SIGINT, SIGTERM, SIGHUP})
            if (std::signal(signal, removeAndEnd) == SIG_IGN)
                std::signal(signal, SIG_IGN);
        std::signal(SIGXFSZ, SIG_IGN);  // a file that becomes too large is a failing write
        descriptor_ = mkstemp(unfinished);
        if (descriptor_ < 0)
            throw Failure(path, std::string("cannot be written: ") + std::strerror(errno));
        hasUnfinished = 1;
    }
    ~UnfinishedFile() {
        if (descriptor_ >= 0)
            close(descriptor_);
        if (hasUnfinished)
            unlink(unfinished);
        hasUnfinished = 0;
    }
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    bool write(const std::vector<uint8_t>& content) const {
        for (size_t done = 0; done < content.size();) {
            const ssize_t count = ::write(descriptor_, content.data() + done, content.size() - done);
            if (count < 0 && errno != EINTR)
                return false;
            done += count > 0 ? static_cast<size_t>(count) : 0;
        }
        return true;
    }

    bool becomes(const std::filesystem::path& target, mode_t permissions) {
        const bool closed = fchmod(descriptor_, permissions) == 0 && close(descriptor_) == 0;
        descriptor_ = -1;
        if (!closed || rename(unfinished, target.c_str()) != 0)
            return false;
        hasUnfinished = 0;
        return true;
    }

  private:
    int descriptor_ = -1;
};

mode_t permissionsOfNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

void writeFile(const std::string& path, const std::vector<uint8_t>& content) {
    // A file that exists keeps its permissions, and links to it remain links.
    std::filesystem::path target = path;
    mode_t permissions = permissionsOfNewFiles();
    if (struct stat existing{}; stat(path.c_str(), &existing) == 0) {
        if (!S_ISREG(existing.st_mode))
            throw Failure(path, "cannot be written: it is not a regular file");
        std::error_code error;
        target = std::filesystem::canonical(path, error);
        if (error)
            throw Failure(path, "cannot be written: " + error.message());
        permissions = existing.st_mode & 0777;
    }
    UnfinishedFile file(path, target);
    if (!file.write(content) || !file.becomes(target, permissions))
        throw Failure(path, std::string("cannot be written: ") + std::strerror(errno));
}
