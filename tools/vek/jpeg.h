#pragma once

#include "codec.h"

Picture decodeJpeg(const std::vector<uint8_t>& content);
std::vector<uint8_t> encodeJpeg(const Picture& picture);
