// The peers of the deep-colour benchmark and quality tools, where the build
// found them: libyuv (TQCS_HAVE_LIBYUV) and FFmpeg's libavcodec and
// libswscale (TQCS_HAVE_FFMPEG).
#pragma once

#if TQCS_HAVE_LIBYUV
#include <libyuv.h>
#endif
#if TQCS_HAVE_FFMPEG
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}
#endif
