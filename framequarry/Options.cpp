// The columns of the results list. There are no filters.

#include "framequarry/FrameQuarryResource.h"
#include "repository/ResultList.h"

LightweightVector<SearchOptionGroup> FrameQuarryResource::getSearchOptions() {
    return {};
}

LightweightVector<LogAttribute> FrameQuarryResource::getLogAttributes() const {
    LightweightVector<LogAttribute> columns =
        resultColumns({LogAttribute(LogAttribute::eName), LogAttribute(LogAttribute::eFormat),
                       LogAttribute(LogAttribute::eFrameRate), LogAttribute(LogAttribute::ePrice)});
    for (LogAttribute& column : columns) {
        column.preferredWidth = 104;
    }
    return columns;
}
