#pragma once
// A Python reference held by a Qt object.
//
// Qt deletes windows from its event loop (deleteLater), where the GIL is not held: dropping a plain
// py::object there aborts the interpreter. Members of Qt objects that keep Python objects (a
// settings mapping, a callback) use PyOwned, which drops its reference under the GIL. For the same
// reason, lambdas given to connect() capture `this`, never a py::object: Qt destroys them with the
// connection, outside the GIL.

#include <pybind11/pybind11.h>

#include <utility>

namespace cobaltrig {

class PyOwned {
public:
    PyOwned() = default;
    PyOwned(pybind11::object object) : object_(std::move(object)) {}
    PyOwned(const PyOwned&) = delete;
    PyOwned& operator=(const PyOwned&) = delete;
    ~PyOwned() { reset(); }

    PyOwned& operator=(pybind11::object object) {
        reset();
        object_ = std::move(object);
        return *this;
    }

    const pybind11::object& get() const { return object_; }
    explicit operator bool() const { return static_cast<bool>(object_); }

    void reset() {
        if (!object_)
            return;
        if (!Py_IsInitialized()) {
            // The interpreter is gone; there is nothing left to release the reference to.
            object_.release();
            return;
        }
        pybind11::gil_scoped_acquire gil;
        object_ = pybind11::object();
    }

private:
    pybind11::object object_;
};

} // namespace cobaltrig
