#pragma once

#include "picture.h"

/** A picture of twice the width and height, by bicubic interpolation (Catmull and Rom); its edge pixels continue it. */
Picture enlarged(const Picture& picture);
