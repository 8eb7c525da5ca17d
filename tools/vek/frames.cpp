#include "frames.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "picture_file.h"

extern char** environ;

namespace {

class PictureFiles : public Frames {
  public:
    explicit PictureFiles(const std::vector<std::string>& paths) : paths_(paths) {}

  private:
    std::optional<Frame> read() override {
        if (next_ == paths_.size())
            return std::nullopt;
        const std::string& path = paths_[next_++];
        return Frame{path, readPicture(path)};
    }

    std::vector<std::string> paths_;
    size_t next_ = 0;
};

/** ffmpeg as a child process that writes every frame to a pipe, as a binary PGM or PPM picture. */
class Video : public Frames {
  public:
    Video(const std::string& path, bool color) : path_(path) {
        const std::string url = "file:" + path;  // so that no name is taken for a protocol or an option
        // Containers of video alone: no text that is drawn, no playlist that names other files. Every frame once.
        const char* const arguments[] = {"ffmpeg",
                                         "-v",
                                         "quiet",
                                         "-nostdin",
                                         "-xerror",
                                         "-protocol_whitelist",
                                         "file",
                                         "-format_whitelist",
                                         "asf,avi,flv,gif,ivf,matroska,mov,mpeg,mpegts,mxf,nut,ogg,yuv4mpegpipe",
                                         "-i",
                                         url.c_str(),
                                         "-map",
                                         "0:v:0",
                                         "-fps_mode",
                                         "passthrough",
                                         "-f",
                                         "image2pipe",
                                         "-c:v",
                                         color ? "ppm" : "pgm",
                                         "-pix_fmt",
                                         color ? "rgb24" : "gray",
                                         "-",
                                         nullptr};
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw Failure(path, std::string("cannot start ffmpeg: ") + std::strerror(errno));
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        const int error =
            posix_spawnp(&child_, "ffmpeg", &actions, nullptr, const_cast<char* const*>(arguments), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        pipe_ = fdopen(ends[0], "rb");
        if (error != 0) {
            std::fclose(pipe_);
            throw Failure(
                path, std::string("videos are read through ffmpeg, which cannot be started: ") + std::strerror(error));
        }
    }
    ~Video() override { end(); }
    Video(const Video&) = delete;
    Video& operator=(const Video&) = delete;

  private:
    std::optional<Frame> read() override {
        long width = 0, height = 0, most = 0;
        char kind = 0;
        const int fields = std::fscanf(pipe_, "P%c %ld %ld %ld", &kind, &width, &height, &most);
        if (fields == EOF) {
            if (end() != 0)
                throw Failure(path_, hasFrames_ ? "ffmpeg cannot decode the rest of it"
                                                : "is neither a picture nor a video that ffmpeg decodes");
            return std::nullopt;
        }
        std::fgetc(pipe_);  // the white space that ends the header
        const int32_t channels = kind == '5' ? 1 : 3;
        if (fields != 4 || most != 255 || width < 1 || height < 1 || width > INT32_MAX / channels || height > INT32_MAX)
            throw Failure(path_, "ffmpeg decodes it to frames that are not 8-bit pictures");
        Picture picture(static_cast<int32_t>(width), static_cast<int32_t>(height), channels, 8);
        if (std::fread(picture.bytes.data(), 1, picture.bytes.size(), pipe_) != picture.bytes.size())
            throw Failure(path_, "ffmpeg stops in the middle of a frame");
        hasFrames_ = true;
        return Frame{path_, std::move(picture)};
    }

    /** Closes the pipe, which ends ffmpeg if it still runs, and gives its exit status. */
    int end() {
        if (pipe_ != nullptr)
            std::fclose(pipe_);
        pipe_ = nullptr;
        int status = 0;
        if (child_ > 0)
            waitpid(child_, &status, 0);
        child_ = 0;
        return status;
    }

    std::string path_;
    pid_t child_ = 0;
    FILE* pipe_ = nullptr;
    bool hasFrames_ = false;
};

}  // namespace

std::optional<Picture> Frames::next() {
    std::optional<Frame> frame = read();
    if (!frame)
        return std::nullopt;
    Picture& picture = frame->picture;
    if (!first_) {
        first_.emplace();
        first_->width = picture.width;
        first_->height = picture.height;
        first_->channels = picture.channels;
        first_->bits = picture.bits;
    } else if (!picture.hasShapeOf(*first_)) {
        throw Failure(frame->name, "is " + picture.shape() + ", but the first frame is " + first_->shape());
    }
    return std::move(picture);
}

std::unique_ptr<Frames> openFrames(const std::vector<std::string>& paths, bool color) {
    std::error_code error;  // a pipe is taken for a picture, for a look into it would use up what it holds
    if (paths.size() == 1 && std::filesystem::is_regular_file(paths[0], error) && !isPictureFile(paths[0]))
        return std::make_unique<Video>(paths[0], color);
    return std::make_unique<PictureFiles>(paths);
}

Picture firstOf(Frames& frames, const std::vector<std::string>& paths) {
    std::optional<Picture> first = frames.next();
    if (!first)
        throw Failure(paths[0], "has no frames");
    if (first->width > INT32_MAX / 4 / first->channels)
        throw Failure(paths[0], "is too wide");
    return std::move(*first);
}
