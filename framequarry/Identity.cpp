// Who the repository is: names, texts, links, and the server to talk to.

#include "ServiceValues.h"
#include "framequarry/FrameQuarryResource.h"
#include "host/web/HTMLUtils.h"

RepositoryDescription FrameQuarryResource::getDescription() const {
    RepositoryDescription description = newDescription();
    description.name = L"FrameQuarry";
    description.summary = HTMLUtils::addParagraphTags(L"FrameQuarry is the first place creators go to find "
                                                      L"amazing content for a fraction of the usual cost",
                                                      HTMLUtils::screenDefault, HTMLUtils::screenDefault);
    description.legalNotice =
        makeTermsNotice(L"All FrameQuarry clips are subject to the ", FrameQuarryTermsURL);
    description.shortName = L"FQ";
    description.webLink = FrameQuarryHomeURL;
    description.connection.server = FrameQuarryServer;
    description.connection.user = signedInUser;
    description.connection.secure = 1;
    description.resourceId = 13337;
    description.capabilities = 1;
    description.logo = L"fq.png";
    return description;
}

WideString FrameQuarryResource::getShortName() const {
    return L"FQ";
}
