// SPDX-License-Identifier: Apache-2.0

#include "FrameRates.h"

#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace QuillGStreamer {

using CameraInterface::Property;

namespace {

constexpr const char* kField = "framerate";
/// Rates that differ by less are the same: texts of cameras have six decimals, and 30000/1001 is called 29.97.
constexpr double kSameRate = 1e-3;

double toNumber(const std::string& text) {
    return g_ascii_strtod(text.c_str(), nullptr);
}

double toNumber(FrameRate rate) {
    return static_cast<double>(rate.numerator) / rate.denominator;
}

/// Returns the usual fraction for a rate, such as 30000/1001.
FrameRate toFrameRate(double framesPerSecond) {
    FrameRate rate;
    const double period = static_cast<double>(GST_SECOND) / framesPerSecond;
    if (!std::isfinite(period) || !(period >= 1) || period > static_cast<double>(G_MAXINT64)) {
        return rate;
    }
    if (!gst_video_guess_framerate(static_cast<GstClockTime>(period), &rate.numerator, &rate.denominator)) {
        gst_util_double_to_fraction(framesPerSecond, &rate.numerator, &rate.denominator);
    }
    return rate;
}

bool isSame(double rate, double other) {
    return std::abs(rate - other) <= kSameRate * rate;
}

void setFraction(GValue& value, FrameRate rate) {
    g_value_init(&value, GST_TYPE_FRACTION);
    gst_value_set_fraction(&value, rate.numerator, rate.denominator);
}

/// Caps of any format at the rates of a value, which is released.
class RateCaps {
public:
    explicit RateCaps(GValue& rates) : m_Caps(makeTemplateCaps()) {
        gst_caps_set_value(m_Caps, kField, &rates);
        g_value_unset(&rates);
    }
    RateCaps(const RateCaps&) = delete;
    RateCaps& operator=(const RateCaps&) = delete;
    ~RateCaps() { gst_caps_unref(m_Caps); }

    bool includes(const GstCaps* accepted) const { return gst_caps_can_intersect(m_Caps, accepted) != 0; }

    /// Returns the rate nearest to @p present that @p accepted accepts; an unknown one if there is none.
    FrameRate findNearest(const GstCaps* accepted, FrameRate present) const {
        FrameRate nearest;
        GstCaps* const common =
            gst_caps_intersect_full(m_Caps, const_cast<GstCaps*>(accepted), GST_CAPS_INTERSECT_FIRST);
        if (gst_caps_is_empty(common) == 0) {
            GstStructure* const structure = gst_structure_copy(gst_caps_get_structure(common, 0));
            gst_structure_fixate_field_nearest_fraction(structure, kField, present.numerator, present.denominator);
            gst_structure_get_fraction(structure, kField, &nearest.numerator, &nearest.denominator);
            gst_structure_free(structure);
        }
        gst_caps_unref(common);
        return nearest;
    }

private:
    GstCaps* m_Caps;
};

void collectRates(Property& property, GValue& rates) {
    if (property.isDiscrete()) {
        g_value_init(&rates, GST_TYPE_LIST);
        for (const std::string& text : property.getValueList()) {
            if (const FrameRate rate = toFrameRate(toNumber(text)); rate.isKnown()) {
                GValue value = G_VALUE_INIT;
                setFraction(value, rate);
                gst_value_list_append_and_take_value(&rates, &value);
            }
        }
        return;
    }
    FrameRate least = toFrameRate(toNumber(property.getMinimum()));
    FrameRate most = toFrameRate(toNumber(property.getMaximum()));
    if (!least.isKnown()) { // below what a fraction can say
        least = {1, G_MAXINT};
    }
    if (!most.isKnown()) { // the camera limits what it gets
        most = {G_MAXINT, 1};
    }
    if (toNumber(least) < toNumber(most)) {
        g_value_init(&rates, GST_TYPE_FRACTION_RANGE);
        gst_value_set_fraction_range_full(&rates, least.numerator, least.denominator, most.numerator, most.denominator);
    } else {
        setFraction(rates, least);
    }
}

/// Returns the text that sets a property to a rate.
std::string findText(Property& property, FrameRate rate) {
    const double wanted = toNumber(rate);
    for (const std::string& text : property.getValueList()) {
        if (isSame(toNumber(text), wanted)) {
            return text;
        }
    }
    std::array<char, G_ASCII_DTOSTR_BUF_SIZE> text{};
    return g_ascii_dtostr(text.data(), text.size(), wanted);
}

} // namespace

FrameRate adaptFrameRate(CameraInterface::Camera& camera, const GstCaps* accepted, bool mayChange) {
    if (!camera.isPropertySupported(CameraInterface::PropertyNames::kFramerate)) {
        return {};
    }
    Property& property = camera.getProperty(CameraInterface::PropertyNames::kFramerate);
    const FrameRate present = toFrameRate(toNumber(property.getValue()));
    if (accepted == nullptr || !mayChange || !present.isKnown() || property.isReadOnly()) {
        return present;
    }
    GValue rates = G_VALUE_INIT;
    setFraction(rates, present);
    if (RateCaps(rates).includes(accepted)) {
        return present;
    }
    collectRates(property, rates);
    const FrameRate wanted = RateCaps(rates).findNearest(accepted, present);
    if (!wanted.isKnown()) {
        return present;
    }
    property.setValue(findText(property, wanted));
    const double written = toNumber(property.getValue());
    return isSame(written, toNumber(wanted)) ? wanted : toFrameRate(written);
}

} // namespace QuillGStreamer
