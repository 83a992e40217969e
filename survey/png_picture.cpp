// SPDX-License-Identifier: BSD-3-Clause
#include "survey/png_picture.h"

#include <memory>

#include <cairo.h>
#include <librsvg/rsvg.h>

#include "platform/text_encoding.h"
#include "survey/png_software.h"

namespace stalwick {

namespace {

struct Unref {
    void operator()(GInputStream* stream) const { g_object_unref(stream); }
    void operator()(RsvgHandle* handle) const { g_object_unref(handle); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
template <typename T>
using Owned = std::unique_ptr<T, Unref>;

PngPicture Fail(const char* why) {
    return {{}, L"it could not be drawn: " + OneLine(FromUtf8(why))};
}

PngPicture FailWith(GError* error) {
    const Owned<GError> owned(error);
    return Fail(error != nullptr ? error->message : "no reason is known");
}

cairo_status_t Append(void* bytes, const unsigned char* data, unsigned size) {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), size);
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace

bool CanRenderPng() {
    return true;
}

PngPicture RenderPng(const std::string& svg, const std::string& software) {
    GError* error = nullptr;
    const Owned<GInputStream> stream(
        g_memory_input_stream_new_from_data(svg.data(), static_cast<gssize>(svg.size()), nullptr));
    // Traces of a whole recording exceed what XML parsers accept from untrusted sources.
    const Owned<RsvgHandle> handle(rsvg_handle_new_from_stream_sync(
        stream.get(), nullptr, RSVG_HANDLE_FLAG_UNLIMITED, nullptr, &error));
    if (!handle) return FailWith(error);
    double width = 0.0;
    double height = 0.0;
    if (!rsvg_handle_get_intrinsic_size_in_pixels(handle.get(), &width, &height)) {
        return Fail("it has no size");
    }
    const Owned<cairo_surface_t> surface(cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(height)));
    const Owned<cairo_t> context(cairo_create(surface.get()));
    const RsvgRectangle area{0.0, 0.0, width, height};
    if (!rsvg_handle_render_document(handle.get(), context.get(), &area, &error)) {
        return FailWith(error);
    }
    PngPicture picture;
    const cairo_status_t status =
        cairo_surface_write_to_png_stream(surface.get(), Append, &picture.bytes);
    if (status != CAIRO_STATUS_SUCCESS) return Fail(cairo_status_to_string(status));
    picture.bytes.insert(kPngHeadSize, PngSoftwareChunk(software));
    return picture;
}

}  // namespace stalwick
