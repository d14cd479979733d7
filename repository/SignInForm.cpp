#include "repository/SignInForm.h"

#include "host/json/Builder.h"
#include "host/preferences/EditorPreferences.h"
#include "host/text/Unicode.h"

WideString makeSignInForm(char const* userPreference) {
    JSON::Builder form;
    form.startChild(nullptr);
    form.startArray(nullptr);

    form.startChild(nullptr);
    form.add("name", L"username", true);
    form.add("legend", L"Username", true);
    form.add("type", L"text", true);
    form.add("hint", L"[ type your username ]", true);
    form.add("value", prefs().getPreference(userPreference, L""), true);
    form.endChild();

    form.startChild(nullptr);
    form.add("name", L"password", true);
    form.add("legend", L"Password", true);
    form.add("type", L"text", true);
    form.add("obfuscated", L"true", false);
    form.add("advance", L"true", false);
    form.add("hint", L"[ type your password ]", true);
    form.endChild();

    form.endArray();
    form.endChild();
    return form.getOutput();
}

WideString typedValue(configb const& form, char const* key) {
    NarrowString value;
    form.in(key, value); // an absent key leaves the value empty
    return fromUTF8(value);
}
