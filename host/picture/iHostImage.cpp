#include "host/picture/iHostImage.h"

iHostImage::~iHostImage() = default;
iImageDecoder::~iImageDecoder() = default;
