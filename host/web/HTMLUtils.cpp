#include "host/web/HTMLUtils.h"

#include <cstdio>

#include "host/text/Numbers.h"

namespace HTMLUtils {

WideString escape(WideString const& text) {
    WideString result;
    result.reserve(text.length());
    for (wchar_t const character : text) {
        switch (character) {
        case L'&':
            result += L"&amp;";
            break;
        case L'<':
            result += L"&lt;";
            break;
        case L'>':
            result += L"&gt;";
            break;
        case L'"':
            result += L"&quot;";
            break;
        case L'\'':
            result += L"&#39;";
            break;
        default:
            result += character;
        }
    }
    return result;
}

WideString makeLink(WideString const& text, WideString const& url) {
    return L"<a href=\"" + escape(url) + L"\">" + escape(text) + L"</a>";
}

WideString addParagraphTags(WideString const& text, std::uint32_t width, std::uint32_t colour) {
    WideString style;
    if (width != screenDefault) {
        style += L"width:" + Zq::WStringFromInteger(width) + L"px;";
    }
    if (colour != screenDefault) {
        char digits[16];
        std::snprintf(digits, sizeof digits, "%06x", static_cast<unsigned>(colour & 0xffffff));
        style += L"color:#";
        for (char const* digit = digits; *digit != '\0'; ++digit) {
            style += static_cast<wchar_t>(*digit);
        }
        style += L';';
    }
    WideString const open = style.isEmpty() ? WideString(L"<p>") : L"<p style=\"" + style + L"\">";
    return open + text + L"</p>";
}

WideString incidentalText(WideString const& text) {
    return L"<small>" + text + L"</small>";
}

} // namespace HTMLUtils
