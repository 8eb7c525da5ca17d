#pragma once

#include "picture.h"

/** A grey picture at another, smaller size: between the four nearest pixels, in proportion to the distances. */
Picture shrunk(const Picture& grey, RoiSize size);
