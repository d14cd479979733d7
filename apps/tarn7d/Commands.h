// The handlers of the commands, one each, and the pieces of a reply that several of them write.
#pragma once

#include <optional>

#include "apps/tarn7d/JsonText.h"
#include "apps/tarn7d/Protocol.h"

namespace tarn7d {

using Reply = std::optional<CommandError>;

Reply login(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);
Reply logout(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);

Reply search(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);
Reply getClipData(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);

Reply getCart(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);
Reply modifyCart(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);
Reply buyWithCredits(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);
Reply buyWithCash(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);

Reply listOwned(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);
Reply download(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply);

// The members of a good reply that all commands share.
void addSuccess(JSON::Builder& reply);
// The keys that tell a clip's picture, sound and length, the same in every list of clips.
void addFormat(JSON::Builder& reply, Clip const& clip);

} // namespace tarn7d
