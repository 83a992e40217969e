// SPDX-License-Identifier: BSD-3-Clause
#include "survey/png_picture.h"

namespace stalwick {

bool CanRenderPng() {
    return false;
}

PngPicture RenderPng(const std::string&, const std::string&) {
    return {{}, L"this program was built without PNG"};
}

}  // namespace stalwick
