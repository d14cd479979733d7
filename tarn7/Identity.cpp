// Who the repository is: names, texts, links, and the server to talk to.

#include <cwctype>

#include "ServiceValues.h"
#include "host/files/iFileManager.h"
#include "host/network/RequestUri.h"
#include "host/os/OS.h"
#include "tarn7/Tarn7Resource.h"

RepositoryDescription Tarn7Resource::getDescription() const {
    RepositoryDescription description = newDescription();
    description.name = L"Tarn7";
    description.summary =
        L"Bring your vision to life, without compromise.  Find inspiration by searching the "
        L"largest library of royalty-free HD and 4k stock video.";
    description.legalNotice =
        makeTermsNotice(L"All Tarn7 clips are subject to the ", addPartnerTags(Tarn7TermsURL));
    description.shortName = L"T7";
    description.webLink = addPartnerTags(Tarn7HomeURL);
    description.connection.server = Tarn7Server;
    description.connection.user = signedInUser;
    description.connection.secure = 1;
    description.resourceId = 13337;
    description.capabilities = 1;
    description.logo = L"t7.png";
    return description;
}

WideString Tarn7Resource::getShortName() const {
    return L"T7";
}

WideString Tarn7Resource::titleCaseHostName() {
    WideString name;
    wchar_t before = L' ';
    for (wchar_t const character : OS().fileManager().getHostName()) {
        auto const letter = static_cast<std::wint_t>(character);
        name += static_cast<wchar_t>(before == L' ' ? std::towupper(letter) : std::towlower(letter));
        before = character;
    }
    return name;
}

WideString Tarn7Resource::addPartnerTags(WideString const& url) {
    WideString partner = titleCaseHostName();
    partner.replaceAll(L" ", L"");
    RequestUri request;
    request.path = url;
    request.queryParameters = {{L"utm_source", partner}, {L"utm_medium", L"partner"}};
    return request.getText(RequestUri::Encoding::off);
}
