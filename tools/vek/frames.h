#pragma once

#include <memory>
#include <optional>

#include "picture.h"

/** The frames of a sequence, one after the other. All of them have the shape of the first. */
class Frames {
  public:
    virtual ~Frames() = default;

    /** The next frame; none at the end. */
    std::optional<Picture> next();

  protected:
    struct Frame {
        std::string name;  // for messages
        Picture picture;
    };
    virtual std::optional<Frame> read() = 0;

  private:
    std::optional<Picture> first_;  // its shape only
};

/** Frames from picture files, or from one video file, which ffmpeg decodes: in grey or, with `color`, in colour. */
std::unique_ptr<Frames> openFrames(const std::vector<std::string>& paths, bool color);

/**
 * The frame that nothing can be done without. Throws Failure where there is none, and where it is too wide for tables
 * of four bytes for each channel of a pixel. The paths are for the message.
 */
Picture firstOf(Frames& frames, const std::vector<std::string>& paths);
