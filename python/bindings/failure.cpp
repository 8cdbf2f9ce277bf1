// photo::PhotoError as the Python exception Failure(kind, text, text as the program shows it). It
// has no file name; the package adds the name and chooses the exception that users see.
#include "bindings.h"

#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::python {

namespace {

namespace py = pybind11;

const char* NameOf(photo::PhotoError::Kind kind)
{
    switch (kind) {
    case photo::PhotoError::Kind::Unreadable: return "unreadable";
    case photo::PhotoError::Kind::Unsupported: return "unsupported";
    case photo::PhotoError::Kind::Damaged: return "damaged";
    case photo::PhotoError::Kind::InvalidRequest: return "invalid-request";
    case photo::PhotoError::Kind::DoesNotFit: return "does-not-fit";
    case photo::PhotoError::Kind::NotWritable: return "not-writable";
    case photo::PhotoError::Kind::OutOfMemory: return "out-of-memory";
    case photo::PhotoError::Kind::Internal: break;
    }
    return "internal";
}

// Messages can quote a file name, which need not be UTF-8.
py::object TextObject(const std::string& text)
{
    return py::reinterpret_steal<py::object>(
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
}

} // namespace

void BindFailure(py::module_& module)
{
    // Never freed, like the module itself.
    static PyObject* failure = PyErr_NewException("vistatrim._vistatrim.Failure", nullptr, nullptr);
    module.attr("Failure") = py::handle(failure);
    // pybind11 prescribes the parameter type.
    // NOLINTNEXTLINE(performance-unnecessary-value-param)
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown)
                std::rethrow_exception(thrown);
        } catch (const photo::PhotoError& error) {
            const py::tuple arguments = py::make_tuple(
                NameOf(error.GetKind()), TextObject(error.what()), TextObject(error.Text("--")));
            PyErr_SetObject(failure, arguments.ptr());
        }
    });
}

} // namespace vistaTrim::python
