#pragma once

#include "picture.h"

/**
 * Writes a file, all of it or nothing: under another name first, which becomes the name when the file is complete. A
 * file that exists keeps its permissions, and a symbolic link to it remains one. What was written so far is removed
 * when that fails and when a signal ends the program.
 */
void writeFile(const std::string& path, const std::vector<uint8_t>& content);
