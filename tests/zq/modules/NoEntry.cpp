// A shared object that is no module.

namespace {
[[maybe_unused]] int const nothing = 0;
}
