#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/**
 * Reads a file part by part, as long as goesOn(content) wants more: it may have no end. Throws Failure where it cannot
 * be read.
 */
std::vector<uint8_t> readFile(const std::string& path,
                              const std::function<bool(const std::vector<uint8_t>& content)>& goesOn);
