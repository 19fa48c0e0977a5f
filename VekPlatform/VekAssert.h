#pragma once

namespace vekserver {

// Where an assertion is reported from: the adapter's source as the report names it,
// the line, the operation's short name and its full signature. Taken at the call
// site with VEK_ASSERT_SITE so that a check made by a shared helper still names the
// operation that asked for it.
class VekAssert {
public:
    VekAssert(const char* file, int line, const char* operation, const char* signature)
        : file_(file), line_(line), operation_(operation), signature_(signature) {}

    // Returns when holds; otherwise prints "[AST][ERR]AST ASSERT, [operation][line]"
    // and raises the C library's assertion failure, which aborts the process.
    void check(bool holds, const char* expression) const {
        if (!holds) {
            fail(expression);
        }
    }

private:
    [[noreturn]] void fail(const char* expression) const;

    const char* file_;
    int line_;
    const char* operation_;
    const char* signature_;
};

}  // namespace vekserver

#define VEK_ASSERT_SITE(file) \
    ::vekserver::VekAssert((file), __LINE__, __func__, __PRETTY_FUNCTION__)
