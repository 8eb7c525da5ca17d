// Arguments in Python as parameters in C, with every check that keeps a call inside the memory of its arrays.
#ifndef VEKCV_PYTHON_ARGUMENTS_H
#define VEKCV_PYTHON_ARGUMENTS_H

#include <limits>
#include <optional>

#include "parameter.h"

namespace vekcv_python {

// Raises an exception that begins with the name of the argument.
template <typename... Args>
inline bool refuse(PyObject* type, const Parameter& parameter, const char* format, Args... args) {
    PyErr_Clear();
    PyObject* text = PyUnicode_FromFormat(format, args...);
    if (text)
        PyErr_Format(type, "%s %U", parameter.name.c_str(), text);
    Py_XDECREF(text);
    return false;
}

inline bool refuseType(const Parameter& parameter, const char* wanted, PyObject* argument) {
    return refuse(PyExc_TypeError, parameter, "must be %s, not %s", wanted, Py_TYPE(argument)->tp_name);
}

// An array of the dtype of the parameter, writable where it is written to.
inline PyArrayObject* checkedArray(const Parameter& parameter, PyObject* argument, char typeCode) {
    if (!PyArray_Check(argument))
        return refuseType(parameter, "a numpy array", argument), nullptr;
    auto* array = reinterpret_cast<PyArrayObject*>(argument);
    if (PyArray_TYPE(array) != typeNumber(typeCode) || PyArray_ISBYTESWAPPED(array)) {
        PyArray_Descr* wanted = PyArray_DescrFromType(typeNumber(typeCode));
        refuse(PyExc_TypeError, parameter, "has the dtype %S, and %S is needed", PyArray_DESCR(array), wanted);
        Py_DECREF(wanted);
        return nullptr;
    }
    if (parameter.access() != 'r' && !PyArray_ISWRITEABLE(array))
        return refuse(PyExc_ValueError, parameter, "is read-only, and results are written to it"), nullptr;
    return array;
}

struct Region {
    std::optional<RoiSize> size;
    const Parameter* image = nullptr;  // whose size it is
};

// Sets pointer and step from an array of rows, columns and channels. Pixels must lie side by side; rows may be apart.
inline bool setImage(const Parameter& parameter, PyObject* argument, Value& pointer, Value& step, Region& region) {
    PyArrayObject* array = checkedArray(parameter, argument, parameter.code[2]);
    if (!array)
        return false;
    const int dimensions = PyArray_NDIM(array), channels = parameter.channels();
    const npy_intp *shape = PyArray_DIMS(array), *strides = PyArray_STRIDES(array);
    if (dimensions != 2 && dimensions != 3)
        return refuse(PyExc_ValueError, parameter,
                      "has %d axes; an image has two, rows and columns, or three, the last of which are channels",
                      dimensions);
    if ((dimensions == 3 ? shape[2] : 1) != channels)
        return refuse(PyExc_ValueError, parameter, "has %zd channels, and %d are needed",
                      Py_ssize_t(dimensions == 3 ? shape[2] : 1), channels);
    constexpr npy_intp most = std::numeric_limits<int32_t>::max();
    const npy_intp itemSize = PyArray_ITEMSIZE(array), pixelSize = itemSize * channels;
    if (shape[0] > most || shape[1] > most / pixelSize || (shape[0] > 1 && strides[0] > most))
        return refuse(PyExc_ValueError, parameter,
                      "is too large: a row is at most 2147483647 bytes, and so are the rows in number");
    // The strides of an axis of one element, and of any axis of an image without pixels, may mean nothing. That of a
    // single row is taken where it can be a step, since a border in memory reads the rows beside it.
    const bool isEmpty = shape[0] == 0 || shape[1] == 0;
    const npy_intp rowSize = shape[1] * pixelSize;
    const bool isStep = shape[0] > 1 || (strides[0] >= rowSize && strides[0] <= most && strides[0] % itemSize == 0);
    const npy_intp rowStep = isStep && !isEmpty ? strides[0] : rowSize;
    if (!isEmpty && ((channels > 1 && strides[2] != itemSize) || (shape[1] > 1 && strides[1] != pixelSize)))
        return refuse(PyExc_ValueError, parameter,
                      "has gaps between its pixels or runs backwards; pass numpy.ascontiguousarray(%s)",
                      parameter.name.c_str());
    if (rowStep < rowSize)
        return refuse(PyExc_ValueError, parameter,
                      "has rows that overlap or run upwards; pass numpy.ascontiguousarray(%s)", parameter.name.c_str());
    const RoiSize size{int32_t(shape[1]), int32_t(shape[0])};
    if (parameter.ofRegion()) {
        if (!region.size)
            region = {size, &parameter};
        else if (size.width != region.size->width || size.height != region.size->height)
            return refuse(PyExc_ValueError, parameter, "has %d x %d pixels, but %s has %d x %d (width x height)",
                          size.width, size.height, region.image->name.c_str(), region.size->width, region.size->height);
    }
    pointer.pointer = PyArray_DATA(array);
    step.int32 = int32_t(rowStep);
    return true;
}

inline bool setNumber(const Parameter& parameter, PyObject* argument, char code, Value& value) {
    if (code == 'f' || code == 'd') {
        const double number = PyFloat_AsDouble(argument);
        if (number == -1 && PyErr_Occurred())
            return PyErr_ExceptionMatches(PyExc_TypeError) && refuseType(parameter, "a number", argument);
        code == 'f' ? void(value.float32 = float(number)) : void(value.float64 = number);
        return true;
    }
    const auto assign = [&]<typename T>(T& target) {
        const Py_ssize_t number = PyNumber_AsSsize_t(argument, PyExc_OverflowError);
        if (number == -1 && PyErr_Occurred() && PyErr_ExceptionMatches(PyExc_TypeError))
            return refuseType(parameter, "an integer", argument);
        using Limits = std::numeric_limits<T>;
        if (PyErr_Occurred() || number < Limits::min() || number > Limits::max())
            return refuse(PyExc_OverflowError, parameter, "is %S, outside of %d to %d", argument, int(Limits::min()),
                          int(Limits::max()));
        target = T(number);
        return true;
    };
    switch (code) {
        case 'B':
            return assign(value.uint8);
        case 'h':
            return assign(value.int16);
        case 'H':
            return assign(value.uint16);
        default:
            return assign(value.int32);
    }
}

// Sets a size, a point or a rectangle from a sequence of numbers.
inline bool setRecord(const Parameter& parameter, PyObject* argument, Value& value) {
    const char record = parameter.code[1];
    const Py_ssize_t count = record == 'T' ? 4 : 2;
    PyObject* items = PySequence_Check(argument) ? PySequence_Fast(argument, "") : nullptr;
    if (!items || PySequence_Fast_GET_SIZE(items) != count) {
        Py_XDECREF(items);
        return refuseType(parameter,
                          count == 4      ? "(x, y, width, height)"
                          : record == 'S' ? "(width, height)"
                                          : "(x, y)",
                          argument);
    }
    bool fine = true;
    for (Py_ssize_t i = 0; i < count && fine; ++i) {
        Value item;
        fine = setNumber(parameter, PySequence_Fast_GET_ITEM(items, i), record == 'F' ? 'f' : 'i', item);
        if (record == 'F')
            (&value.point32f.x)[i] = item.float32;
        else
            (&value.rect.x)[i] = item.int32;
    }
    Py_DECREF(items);
    return fine;
}

inline bool setElements(const Parameter& parameter, PyObject* argument, Value& value) {
    value.pointer = nullptr;
    if (argument == Py_None)
        return true;
    PyArrayObject* array = checkedArray(parameter, argument, parameter.code[2]);
    if (!array)
        return false;
    if (!PyArray_IS_C_CONTIGUOUS(array))
        return refuse(PyExc_ValueError, parameter, "has gaps between its elements; pass numpy.ascontiguousarray(%s)",
                      parameter.name.c_str());
    value.pointer = PyArray_DATA(array);
    return true;
}

inline bool setAddress(const Parameter& parameter, PyObject* argument, Value& value) {
    value.pointer = nullptr;
    if (argument == Py_None)
        return true;
    if (PyArray_Check(argument)) {
        value.pointer = PyArray_DATA(reinterpret_cast<PyArrayObject*>(argument));
        return true;
    }
    if (!PyLong_Check(argument))
        return refuseType(parameter, "an address", argument);
    value.pointer = PyLong_AsVoidPtr(argument);
    return !PyErr_Occurred();
}

inline bool set(const Parameter& parameter, PyObject* argument, Value& value) {
    switch (parameter.kind()) {
        case 'n':
            return setNumber(parameter, argument, parameter.code[1], value);
        case 'v':
            return setRecord(parameter, argument, value);
        case 'e':
            return setElements(parameter, argument, value);
        default:
            return setAddress(parameter, argument, value);
    }
}

}  // namespace vekcv_python

#endif
