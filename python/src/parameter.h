// What a parameter in C is, and which argument in Python it follows from.
#ifndef VEKCV_PYTHON_PARAMETER_H
#define VEKCV_PYTHON_PARAMETER_H

#define PY_SSIZE_T_CLEAN
#include <Python.h>
#define NPY_NO_DEPRECATED_API NPY_1_7_API_VERSION
#include <ffi.h>
#include <numpy/arrayobject.h>
#include <structmember.h>

#include <cstdint>
#include <string>

#include "vekcv.h"

namespace vekcv_python {

constexpr int kMostParameters = 20;
constexpr int kMostChannels = 9;

// What a parameter in C receives.
union Value {
    void* pointer;
    int32_t int32;
    int16_t int16;
    uint16_t uint16;
    uint8_t uint8;
    float float32;
    double float64;
    RoiSize size;
    ImagePoint point;
    ImagePoint32f point32f;
    ImageRect rect;
    ConnectedComponent component;
};

// Codes of arguments, as the generator of the table writes them:
//   I <access> <dtype> <channels> <extent>   image: r read, w read and written, o result (made where it is None); the
//                                            extent is = for an image of the region's size, * for any other
//   R                                        size of the region, which no argument gives
//   n <dtype>                                number
//   v <record>                               S size, P point, F point between pixels, T rectangle, from a sequence
//   e <access> <dtype>                       array of elements without gaps; None is a null pointer
//   p                                        address: an array of bytes, an integer or None
//   > <record or dtype>                      result that is returned
struct Parameter {
    std::string name;
    std::string code;

    char kind() const { return code[0]; }
    char access() const { return code[1]; }
    int channels() const { return code[3] - '0'; }
    bool ofRegion() const { return code[4] == '='; }
    bool isGiven() const { return kind() != 'R' && kind() != '>'; }
};

inline ffi_type* fields2i[] = {&ffi_type_sint32, &ffi_type_sint32, nullptr};
inline ffi_type* fields2f[] = {&ffi_type_float, &ffi_type_float, nullptr};
inline ffi_type* fields4i[] = {&ffi_type_sint32, &ffi_type_sint32, &ffi_type_sint32, &ffi_type_sint32, nullptr};
inline ffi_type pair{0, 0, FFI_TYPE_STRUCT, fields2i}, pair32f{0, 0, FFI_TYPE_STRUCT, fields2f},
    rectangle{0, 0, FFI_TYPE_STRUCT, fields4i};

inline ffi_type* typeOf(char code) {
    switch (code) {
        case 'B':
            return &ffi_type_uint8;
        case 'h':
            return &ffi_type_sint16;
        case 'H':
            return &ffi_type_uint16;
        case 'i':
            return &ffi_type_sint32;
        case 'f':
            return &ffi_type_float;
        case 'd':
            return &ffi_type_double;
        case 'F':
            return &pair32f;
        case 'T':
            return &rectangle;
        default:
            return &pair;  // S and P
    }
}

// The type of elements that a code names; -1 for a code that names none.
inline int typeNumber(char code) {
    switch (code) {
        case 'b':
            return NPY_INT8;
        case 'B':
            return NPY_UINT8;
        case 'h':
            return NPY_INT16;
        case 'H':
            return NPY_UINT16;
        case 'i':
            return NPY_INT32;
        case 'I':
            return NPY_UINT32;
        case 'f':
            return NPY_FLOAT32;
        case 'd':
            return NPY_FLOAT64;
        default:
            return -1;
    }
}

inline bool isCode(const std::string& code) {
    static constexpr size_t lengths[][2] = {{'I', 5}, {'R', 1}, {'n', 2}, {'v', 2}, {'e', 3}, {'p', 1}, {'>', 2}};
    for (const auto& [kind, length] : lengths)
        if (!code.empty() && size_t(code[0]) == kind)
            return code.size() == length &&
                   (kind != 'I' || (typeNumber(code[2]) >= 0 && code[3] >= '1' && code[3] <= '0' + kMostChannels)) &&
                   (kind != 'e' || typeNumber(code[2]) >= 0);
    return false;
}

}  // namespace vekcv_python

#endif
