// What a call returns.
#ifndef VEKCV_PYTHON_RESULTS_H
#define VEKCV_PYTHON_RESULTS_H

#include <array>

#include "parameter.h"

namespace vekcv_python {

inline PyObject* makeImage(const Parameter& parameter, RoiSize size) {
    npy_intp shape[] = {size.height, size.width, parameter.channels()};
    return PyArray_EMPTY(parameter.channels() == 1 ? 2 : 3, shape, typeNumber(parameter.code[2]), 0);
}

inline PyObject* resultOf(char code, const Value& value) {
    switch (code) {
        case 'd':
            return PyFloat_FromDouble(value.float64);
        case 'f':
            return PyFloat_FromDouble(double(value.float32));
        case 'i':
            return PyLong_FromLong(value.int32);
        case 'C': {
            const ConnectedComponent& component = value.component;
            const ImageRect& rect = component.rect;
            return Py_BuildValue("(d(ddd)(iiii))", component.area, component.value[0], component.value[1],
                                 component.value[2], rect.x, rect.y, rect.width, rect.height);
        }
        default:
            return Py_BuildValue("(ii)", value.point.x, value.point.y);
    }
}

class Results {
  public:
    ~Results() {
        for (int i = 0; i < count_; ++i)
            Py_DECREF(items_[i]);
    }
    // Takes over a reference; false for none.
    bool add(PyObject* item) {
        if (item)
            items_[count_++] = item;
        return item;
    }
    // None, the only result, or a tuple of them.
    PyObject* take() {
        if (count_ == 0)
            Py_RETURN_NONE;
        if (count_ == 1)
            return items_[--count_];
        PyObject* tuple = PyTuple_New(count_);
        for (int i = 0; tuple && i < count_; ++i)
            PyTuple_SET_ITEM(tuple, i, Py_NewRef(items_[i]));
        return tuple;
    }

  private:
    std::array<PyObject*, kMostParameters> items_;
    int count_ = 0;
};

}  // namespace vekcv_python

#endif
