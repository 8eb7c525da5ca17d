#pragma once

#include "picture.h"

/** Whether a file begins like a PNG or a JPEG picture; a file that cannot be read throws Failure. */
bool isPictureFile(const std::string& path);

/**
 * Reads a PNG or JPEG file, which its content tells. Palettes become colour, transparency is dropped, grey of 16 bits
 * stays as it is, and colour of 16 bits becomes 8.
 */
Picture readPicture(const std::string& path);

/** Throws Failure for a picture of 16 bits, with `purpose`, as in "edges are those of", before "8-bit pictures". */
void checkEightBit(const std::string& path, const Picture& picture, const std::string& purpose);

/** Reads a file that must hold a picture of 8 bits. */
Picture readEightBit(const std::string& path, const std::string& purpose);

/** Throws Failure where a picture has not the shape of another; the paths are for the message. */
void checkSameShape(const std::string& path, const Picture& picture, const std::string& otherPath,
                    const Picture& other);

/** Throws UsageError where writePicture could not write a file of this name: .png, .jpg and .jpeg are known. */
void checkPictureName(const std::string& path);

/** Writes a picture in the format that the name ends in, all of it or nothing. */
void writePicture(const std::string& path, const Picture& picture);
