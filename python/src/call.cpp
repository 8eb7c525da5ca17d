// The module vekcv._call: exports of the library as callables that take numpy arrays. A Function knows from its codes
// how each argument becomes one or two parameters in C; the interpreter's lock is released while the library works.
#include <array>
#include <vector>

#include "arguments.h"
#include "results.h"

namespace vekcv_python {
namespace {

struct Function {
    PyObject_HEAD vectorcallfunc call;
    PyObject* name;
    void (*address)(void);
    std::vector<Parameter> parameters;
    ffi_cif interface;
    std::vector<ffi_type*> types;
    Py_ssize_t given;
};

PyObject* reporter;  // called with the name of an export and a status that is not StatusOk

PyObject* callFunction(PyObject* self, PyObject* const* arguments, size_t flags, PyObject* names) {
    auto* function = reinterpret_cast<Function*>(self);
    const Py_ssize_t count = PyVectorcall_NARGS(flags);
    if (names || count != function->given)
        return PyErr_Format(PyExc_TypeError, "%U takes %zd arguments by position", function->name, function->given);

    std::array<Value, kMostParameters> values, outputs;
    std::array<void*, kMostParameters> pointers;
    Results results;
    Region region;
    Value* regionValue = nullptr;
    int used = 0, outputCount = 0;
    for (const Parameter& parameter : function->parameters) {
        Value& value = values[used];
        pointers[used++] = &value;
        if (parameter.kind() == 'R') {
            regionValue = &value;
        } else if (parameter.kind() == '>') {
            outputs[outputCount] = Value{};
            value.pointer = &outputs[outputCount++];
        } else if (parameter.kind() == 'I') {
            PyObject* argument = *arguments++;
            if (parameter.access() == 'o') {
                const bool isMade = argument == Py_None && region.size;
                argument = isMade ? makeImage(parameter, *region.size) : Py_NewRef(argument);
                if (!results.add(argument))
                    return nullptr;
            }
            Value& step = values[used];
            pointers[used++] = &step;
            if (!setImage(parameter, argument, value, step, region))
                return nullptr;
        } else if (!set(parameter, *arguments++, value)) {
            return nullptr;
        }
    }
    if (regionValue)
        regionValue->size = *region.size;

    ffi_arg status = 0;
    Py_BEGIN_ALLOW_THREADS ffi_call(&function->interface, function->address, &status, pointers.data());
    Py_END_ALLOW_THREADS if (Status(status) != StatusOk) {
        PyObject* reported = PyObject_CallFunction(reporter, "Oi", function->name, int(Status(status)));
        if (!reported)
            return nullptr;
        Py_DECREF(reported);
    }
    outputCount = 0;
    for (const Parameter& parameter : function->parameters)
        if (parameter.kind() == '>' && !results.add(resultOf(parameter.code[1], outputs[outputCount++])))
            return nullptr;
    return results.take();
}

bool readParameters(Function* function, PyObject* parameters) {
    bool hasRegion = false, hasSize = false;
    for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(parameters); ++i) {
        const char *name, *code;
        if (!PyArg_ParseTuple(PyTuple_GET_ITEM(parameters, i), "ss", &name, &code))
            return false;
        const Parameter parameter{name, code};
        if (!isCode(parameter.code))
            return PyErr_Format(PyExc_ValueError, "%s: no such code: %s", name, code), false;
        const char kind = parameter.kind();
        hasRegion |= kind == 'R';
        // A result is made with the size of the region, so an image that has it comes first.
        if (kind == 'I' && parameter.ofRegion() && parameter.access() != 'o')
            hasSize = true;
        if (kind == 'n')
            function->types.push_back(typeOf(parameter.code[1]));
        else if (kind == 'v' || kind == 'R')
            function->types.push_back(typeOf(kind == 'R' ? 'S' : parameter.code[1]));
        else
            function->types.push_back(&ffi_type_pointer);
        if (kind == 'I')
            function->types.push_back(&ffi_type_sint32);
        function->given += parameter.isGiven();
        function->parameters.push_back(parameter);
    }
    if (function->types.size() > kMostParameters || (hasRegion && !hasSize))
        return PyErr_Format(PyExc_ValueError, "too many parameters, or a region without an image"), false;
    return true;
}

PyObject* newFunction(PyTypeObject* type, PyObject* arguments, PyObject*) {
    PyObject *name, *address, *parameters;
    if (!PyArg_ParseTuple(arguments, "UO!O!", &name, &PyLong_Type, &address, &PyTuple_Type, &parameters))
        return nullptr;
    auto* function = reinterpret_cast<Function*>(type->tp_alloc(type, 0));
    if (!function)
        return nullptr;
    new (&function->parameters) std::vector<Parameter>;
    new (&function->types) std::vector<ffi_type*>;
    function->call = callFunction;
    function->name = Py_NewRef(name);
    function->address = reinterpret_cast<void (*)(void)>(PyLong_AsVoidPtr(address));
    if (!readParameters(function, parameters)) {
        Py_DECREF(function);
        return nullptr;
    }
    ffi_prep_cif(&function->interface, FFI_DEFAULT_ABI, unsigned(function->types.size()), &ffi_type_sint32,
                 function->types.data());
    return reinterpret_cast<PyObject*>(function);
}

void freeFunction(PyObject* self) {
    auto* function = reinterpret_cast<Function*>(self);
    PyTypeObject* type = Py_TYPE(self);
    function->parameters.~vector();
    function->types.~vector();
    Py_XDECREF(function->name);
    type->tp_free(self);
    Py_DECREF(type);
}

PyMemberDef functionMembers[] = {{"__vectorcalloffset__", T_PYSSIZET, offsetof(Function, call), READONLY, nullptr},
                                 {"name", T_OBJECT, offsetof(Function, name), READONLY, nullptr},
                                 {nullptr, 0, 0, 0, nullptr}};
PyType_Slot functionSlots[] = {{Py_tp_new, reinterpret_cast<void*>(newFunction)},
                               {Py_tp_dealloc, reinterpret_cast<void*>(freeFunction)},
                               {Py_tp_call, reinterpret_cast<void*>(PyVectorcall_Call)},
                               {Py_tp_members, functionMembers},
                               {0, nullptr}};
PyType_Spec functionSpec{"vekcv._call.Function", sizeof(Function), 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_VECTORCALL,
                         functionSlots};

// The key of an image's form in the tables of operations: its dtype and its number of channels; None for what is no
// image.
PyObject* formOf(PyObject*, PyObject* argument) {
    if (!PyArray_Check(argument))
        Py_RETURN_NONE;
    auto* array = reinterpret_cast<PyArrayObject*>(argument);
    const int dimensions = PyArray_NDIM(array);
    const npy_intp channels = dimensions == 3 ? PyArray_DIM(array, 2) : 1;
    if ((dimensions != 2 && dimensions != 3) || channels < 1 || channels > kMostChannels)
        Py_RETURN_NONE;
    return PyLong_FromLong(PyArray_TYPE(array) * 16 + int(channels));
}

PyObject* setReporter(PyObject*, PyObject* callable) {
    Py_XSETREF(reporter, Py_NewRef(callable));
    Py_RETURN_NONE;
}

PyMethodDef methods[] = {{"form", formOf, METH_O, "dtype and channels of an image, as one number"},
                         {"set_reporter", setReporter, METH_O, "what is called with each status that is not 0"},
                         {nullptr, nullptr, 0, nullptr}};
PyModuleDef module{PyModuleDef_HEAD_INIT,
                   "vekcv._call",
                   "exports as callables on numpy arrays",
                   -1,
                   methods,
                   nullptr,
                   nullptr,
                   nullptr,
                   nullptr};

}  // namespace
}  // namespace vekcv_python

using namespace vekcv_python;

PyMODINIT_FUNC PyInit__call() {
    import_array();
    PyObject* result = PyModule_Create(&module);
    PyObject* type = PyType_FromSpec(&functionSpec);
    if (!result || !type || PyModule_AddObjectRef(result, "Function", type) < 0) {
        Py_XDECREF(result);
        result = nullptr;
    }
    Py_XDECREF(type);
    return result;
}
