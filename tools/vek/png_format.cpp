// libpng reports an error by a jump to the last setjmp. Every function below that calls setjmp returns false after such
// a jump, and holds no object with a destructor that the jump could pass by; the objects live in its callers.
#include "png_format.h"

#include <png.h>

#include <csetjmp>
#include <cstring>

namespace {

struct Session {
    std::string error;
    const std::vector<uint8_t>* input = nullptr;
    size_t position = 0;
    std::vector<uint8_t> output;
    png_structp png = nullptr;
    png_infop info = nullptr;
    bool reads;

    explicit Session(bool forReading) : reads(forReading) {
        png = (reads ? png_create_read_struct : png_create_write_struct)(PNG_LIBPNG_VER_STRING, this, fail, warn);
        info = png_create_info_struct(png);
    }
    ~Session() {
        if (reads)
            png_destroy_read_struct(&png, &info, nullptr);
        else
            png_destroy_write_struct(&png, &info);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    [[noreturn]] static void fail(png_structp png, png_const_charp message) {
        static_cast<Session*>(png_get_error_ptr(png))->error = message;
        png_longjmp(png, 1);
    }
    static void warn(png_structp, png_const_charp) {}

    static void read(png_structp png, png_bytep bytes, size_t count) {
        auto* const session = static_cast<Session*>(png_get_io_ptr(png));
        if (count > session->input->size() - session->position)
            png_error(png, "the file ends too early");
        std::memcpy(bytes, session->input->data() + session->position, count);
        session->position += count;
    }
    static void write(png_structp png, png_bytep bytes, size_t count) {
        auto& output = static_cast<Session*>(png_get_io_ptr(png))->output;
        output.insert(output.end(), bytes, bytes + count);
    }
    static void flush(png_structp) {}
};

/** Reads up to the first row, and asks for the forms of pixels that a Picture has. */
bool readHeader(Session& session) {
    const png_structp png = session.png;
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_read_fn(png, &session, Session::read);
    png_set_user_limits(png, INT32_MAX, INT32_MAX);
    png_read_info(png, session.info);
    // No compressed byte gives more than 1032; a size beyond that is a lie, and not worth the memory.
    const uint64_t rows = png_get_image_height(png, session.info), rowBytes = png_get_rowbytes(png, session.info);
    if (rowBytes * rows / 1032 > session.input->size())
        png_error(png, "the file is too short for its size");
    const bool grey = (png_get_color_type(png, session.info) & PNG_COLOR_MASK_COLOR) == 0;
    if (grey) {
        png_set_expand_gray_1_2_4_to_8(png);
        png_set_swap(png);  // from the file's order of bytes to the processor's
    } else {
        png_set_palette_to_rgb(png);
        png_set_scale_16(png);
    }
    png_set_strip_alpha(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, session.info);
    return true;
}

bool readRows(Session& session, png_bytepp rows) {
    if (setjmp(png_jmpbuf(session.png)))
        return false;
    png_read_image(session.png, rows);
    png_read_end(session.png, nullptr);
    return true;
}

bool writeAll(Session& session, const Picture& picture) {
    const png_structp png = session.png;
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_write_fn(png, &session, Session::write, Session::flush);
    png_set_IHDR(png, session.info, static_cast<png_uint_32>(picture.width), static_cast<png_uint_32>(picture.height),
                 picture.bits, picture.channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, session.info);
    if (picture.bits == 16)
        png_set_swap(png);
    for (int32_t y = 0; y < picture.height; ++y)
        png_write_row(png, picture.bytes.data() + ptrdiff_t{y} * picture.step());
    png_write_end(png, nullptr);
    return true;
}

std::vector<png_bytep> rowsOf(Picture& picture) {
    std::vector<png_bytep> rows(static_cast<size_t>(picture.height));
    for (size_t y = 0; y < rows.size(); ++y)
        rows[y] = picture.bytes.data() + y * static_cast<size_t>(picture.step());
    return rows;
}

}  // namespace

Picture decodePng(const std::vector<uint8_t>& content) {
    Session session(true);
    session.input = &content;
    const auto require = [&](bool done) {
        if (!done)
            throw CodecError("is not a whole PNG picture: " + session.error);
    };
    require(readHeader(session));
    Picture picture =
        makePicture(png_get_image_width(session.png, session.info), png_get_image_height(session.png, session.info),
                    png_get_channels(session.png, session.info), png_get_bit_depth(session.png, session.info));
    require(readRows(session, rowsOf(picture).data()));
    return picture;
}

std::vector<uint8_t> encodePng(const Picture& picture) {
    Session session(false);
    if (!writeAll(session, picture))
        throw CodecError("cannot be written as PNG: " + session.error);
    return std::move(session.output);
}
