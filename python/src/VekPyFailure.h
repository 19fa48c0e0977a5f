#pragma once

#include <stdexcept>
#include <string>

namespace vekpython {

// A failure that reaches Python as one of the package's own exceptions (vektuner._errors),
// so that a script can tell a silent device from a broken line or a misbehaving daemon.
class VekPyFailure : public std::runtime_error {
public:
    enum class Kind { Error, Timeout, Line, Daemon };

    VekPyFailure(Kind kind, const std::string& what) : std::runtime_error(what), kind_(kind) {}

    // The exception's class name in vektuner._errors.
    const char* className() const {
        switch (kind_) {
            case Kind::Timeout:
                return "Timeout";
            case Kind::Line:
                return "LineError";
            case Kind::Daemon:
                return "DaemonError";
            case Kind::Error:
                break;
        }
        return "Error";
    }

private:
    Kind kind_;
};

}  // namespace vekpython
