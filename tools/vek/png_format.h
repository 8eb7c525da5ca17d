#pragma once

#include "codec.h"

Picture decodePng(const std::vector<uint8_t>& content);
std::vector<uint8_t> encodePng(const Picture& picture);
