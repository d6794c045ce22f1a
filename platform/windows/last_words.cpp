// What the C++ library does when the program cannot go on: it writes why to the standard error output, which
// a window's program has none of, and for that brings a reader of mangled names into the program, a tenth of
// its code. These stand in the place of the library's own.
#include <cstdlib>

namespace __gnu_cxx { // NOLINT(bugprone-reserved-identifier,cert-dcl37-c): the library's names

/// https://gcc.gnu.org/onlinedocs/libstdc++/manual/using_exceptions.html
[[noreturn]] void __verbose_terminate_handler() {
    std::abort();
}

} // namespace __gnu_cxx

namespace std {

/// A check of _GLIBCXX_ASSERTIONS that has failed.
void __glibcxx_assert_fail(const char* /*file*/, int /*line*/, const char* /*function*/,
                           const char* /*condition*/) noexcept {
    std::abort();
}

} // namespace std
