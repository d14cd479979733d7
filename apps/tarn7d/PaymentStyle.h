// The style sheet of the payment pages.
#pragma once

#include <string_view>

namespace tarn7d {

// CSS without any "<", as it stands in the page's style element.
extern std::string_view const paymentStyle;

} // namespace tarn7d
