// Which containers are opened as media.
#pragma once

namespace engine {

// As FFmpeg's list of names: those that hold their media themselves. Lists of other files are none of them.
inline constexpr char const* mediaContainers =
    "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,mpegts,mpeg,mpegvideo,avi,mxf,dv,flv,gxf,"
    "asf,ogg,nut,h264,hevc,m4v";

} // namespace engine
