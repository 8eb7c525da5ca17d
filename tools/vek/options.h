#pragma once

#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <cstdlib>

/** A picture for the commands that work in grey. */
inline void addGreyInput(CLI::App& command, std::string& path, const std::string& name = "IN") {
    command.add_option(name, path, "An 8-bit picture; colour is taken as grey, .299 R + .587 G + .114 B")->required();
}

/** Frames of a sequence, for openFrames. */
inline void addFrames(CLI::App& command, std::vector<std::string>& paths, bool& color) {
    command.add_option("FRAME", paths, "Pictures of the same kind, or one video file")->required();
    command.add_flag("--color", color, "Take a video's frames in colour rather than in grey");
}

/** A check of an option that takes a number; CLI::Range would let NaN pass. */
inline auto numberFrom(double least, double largest) {
    return [=](const std::string& text) -> std::string {
        const double number = std::strtod(text.c_str(), nullptr);
        if (number >= least && number <= largest)
            return "";
        std::array<char, 64> message{};
        std::snprintf(message.data(), message.size(), "is not a number from %g to %g", least, largest);
        return message.data();
    };
}
