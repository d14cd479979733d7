// What an asset is before anybody has written to it.
#pragma once

#include <gtest/gtest.h>

#include "repository/RemoteAsset.h"

namespace repository_tests {

inline void expectDefaults(RemoteAsset const& asset) {
    EXPECT_EQ(asset.stamp, IdStamp());
    EXPECT_EQ(asset.getStamp(), IdStamp());
    EXPECT_EQ(asset.assetKind, 1);
    EXPECT_EQ(asset.payload, nullptr);
    EXPECT_TRUE(asset.id.isEmpty());
    EXPECT_TRUE(asset.cookie.isNull());
    EXPECT_EQ(asset.status, 1);
    EXPECT_TRUE(asset.displayAttributes.isEmpty());
    EXPECT_TRUE(asset.logAttributes.isEmpty());
    EXPECT_TRUE(asset.auxiliaryText.isEmpty());
    EXPECT_TRUE(asset.mediaLocation.isEmpty());
    EXPECT_EQ(asset.mediaSize, 0U);
    EXPECT_TRUE(asset.mediaExtension.isEmpty());
    EXPECT_TRUE(asset.proxyLocation.isEmpty());
    EXPECT_EQ(asset.proxySize, 0U);
    EXPECT_TRUE(asset.proxyExtension.isEmpty());
    EXPECT_EQ(asset.frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(static_cast<std::int32_t>(asset.frameRate), 0);
    EXPECT_EQ(asset.auxiliary1, 0U);
    EXPECT_EQ(asset.auxiliary2, 0U);
    EXPECT_EQ(asset.extent, (XY<int>{0, 0}));
    EXPECT_EQ(asset.videoChannels, 0);
    EXPECT_EQ(asset.audioChannels, 0);
}

} // namespace repository_tests
