#pragma once

#include <string>

/** A text that stays on its line: control characters, which names of files may hold, become question marks. */
inline std::string printable(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ')
            c = '?';
    return text;
}
