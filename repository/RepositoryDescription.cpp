#include "repository/RepositoryDescription.h"

#include "host/web/HTMLUtils.h"

WideString makeTermsNotice(WideString const& lead, WideString const& termsAddress) {
    return HTMLUtils::addParagraphTags(
        HTMLUtils::incidentalText(lead + HTMLUtils::makeLink(L"Terms of Service", termsAddress)),
        HTMLUtils::screenDefault, HTMLUtils::screenDefault);
}
