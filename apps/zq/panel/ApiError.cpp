#include "apps/zq/panel/ApiError.h"

#include <algorithm>

namespace zq::panel {

namespace {

constexpr ErrorRow table[] = {
    {ErrorCode::badRequest, "bad_request", 400}, {ErrorCode::notJson, "not_json", 400},
    {ErrorCode::notEntered, "not_entered", 401}, {ErrorCode::foreignOrigin, "foreign_origin", 403},
    {ErrorCode::notFound, "not_found", 404},     {ErrorCode::notAllowed, "not_allowed", 405},
    {ErrorCode::conflict, "conflict", 409},      {ErrorCode::tooLarge, "too_large", 413},
    {ErrorCode::wrongHost, "wrong_host", 421},   {ErrorCode::failed, "failed", 502},
    {ErrorCode::internal, "internal", 500},
};

} // namespace

std::span<ErrorRow const> errorTable() {
    return table;
}

ErrorRow const& rowOf(ErrorCode code) {
    return *std::ranges::find(table, code, &ErrorRow::code);
}

} // namespace zq::panel
