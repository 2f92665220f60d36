// SPDX-License-Identifier: Apache-2.0

#include "Cameras/SimulatedCamera/DescriptionParser.h"

#include <exception>
#include <stdexcept>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace CameraInterface::SimulatedAdapter {

namespace {

using nlohmann::json;

const char* const kCameras = "Cameras";
const char* const kIdentification = "Identification";

/// The number of containers around a value: none for the document itself.
enum Level : std::size_t {
    kDocument = 0,
    kInDocument = 1,
    kInCameras = 2,
    kInCamera = 3,
    /// Document, cameras, camera, functions, function, parameters, descriptor. Deeper values are skipped.
    kInDeepest = 7
};

/// Receives the parser's events.
class CameraListReader {
public:
    CameraListReader(const std::string& key, const std::function<void(const json&)>& visit,
                     const std::function<void()>& forget)
        : m_WantedKey(key), m_Visit(visit), m_Forget(forget) {}

    /// Called at the end of the document.
    void finish() {
        if (const auto cameras = m_Document.find(kCameras); cameras != m_Document.end()) {
            for (const json& camera : *cameras) { // empty for an array, whose elements were visited already
                visit(camera);
            }
        }
        if (m_Failure) {
            std::rethrow_exception(m_Failure);
        }
    }

    // Called by the parser.
    bool null() { return takeSingle(nullptr); }
    bool boolean(bool value) { return takeSingle(value); }
    bool number_integer(json::number_integer_t value) { return takeSingle(value); }
    bool number_unsigned(json::number_unsigned_t value) { return takeSingle(value); }
    bool number_float(json::number_float_t value, const std::string& /*text*/) { return takeSingle(value); }
    bool string(std::string& value) { return takeSingle(std::move(value)); }
    template <typename Bytes>
    bool binary(Bytes& /*value*/) {
        return true; // does not occur in JSON text
    }
    bool start_object(std::size_t /*size*/) { return open(json::object()); }
    bool start_array(std::size_t /*size*/) { return open(json::array()); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }

    bool key(std::string& key) {
        if (m_Skipped == 0) {
            m_KeyIsWanted = isWanted(key);
            m_Key = std::move(key);
        }
        return true;
    }

    /// @throws Failure  as the parser made it
    template <typename Failure>
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/, const Failure& failure) {
        throw failure;
    }

private:
    std::size_t level() const { return m_Open.size(); }
    bool isStreamed() const { return level() == kInCameras && m_Open.back()->is_array(); }

    bool isWanted(const std::string& key) {
        if (level() == kInDocument) {
            const bool wanted = key == kCameras;
            if (wanted) {
                m_Failure = nullptr;
                m_Cameras = 0;
                m_Forget();
            }
            return wanted;
        }
        return level() != kInCamera || key == kIdentification || (!m_WantedKey.empty() && key == m_WantedKey);
    }

    /// Keeps a value in its place; returns null if it is not needed.
    json* keep(json&& value) {
        if (level() == kDocument) {
            m_Document = std::move(value);
            return &m_Document;
        }
        json& container = *m_Open.back();
        if (container.is_object() ? !m_KeyIsWanted : level() == kInDocument || level() == kInCamera) {
            return nullptr;
        }
        if (++m_Values > kMostValuesOfCamera) {
            throw std::length_error("The camera list describes a camera by more than " +
                                    std::to_string(kMostValuesOfCamera) + " values.");
        }
        if (isStreamed()) {
            m_Camera = std::move(value);
            return &m_Camera;
        }
        if (container.is_object()) {
            json& member = container[m_Key];
            member = std::move(value);
            return &member;
        }
        container.push_back(std::move(value));
        return &container.back();
    }

    template <typename Value>
    bool takeSingle(Value&& value) {
        if (m_Skipped == 0) {
            keep(json(std::forward<Value>(value)));
            endValue();
        }
        return true;
    }

    bool open(json&& container) {
        json* const kept = m_Skipped == 0 ? keep(std::move(container)) : nullptr;
        if (kept == nullptr || level() == kInDeepest) {
            ++m_Skipped;
        } else {
            m_Open.push_back(kept);
        }
        return true;
    }

    bool close() {
        if (m_Skipped > 0) {
            --m_Skipped;
        } else {
            m_Open.pop_back();
            endValue();
        }
        return true;
    }

    void endValue() {
        if (level() > kDocument && isStreamed()) {
            visit(m_Camera);
            m_Camera = nullptr;
            m_Values = 0;
        }
    }

    /// An error in an entry is reported only if the rest of the text has no error.
    void visit(const json& camera) {
        if (++m_Cameras > kMostCameras) {
            throw std::length_error("The camera list has more than " + std::to_string(kMostCameras) + " cameras.");
        }
        if (!m_Failure) {
            try {
                m_Visit(camera);
            } catch (...) {
                m_Failure = std::current_exception();
            }
        }
    }

    const std::string& m_WantedKey;
    const std::function<void(const json&)>& m_Visit;
    const std::function<void()>& m_Forget;

    json m_Document;           ///< without unneeded values, and without the elements of an array of cameras
    json m_Camera;             ///< the element being read
    std::vector<json*> m_Open; ///< the containers around the next value, from the document on
    std::size_t m_Skipped = 0; ///< the containers around it that are not kept
    std::string m_Key;
    bool m_KeyIsWanted = false;
    std::size_t m_Values = 0;
    std::size_t m_Cameras = 0;
    std::exception_ptr m_Failure;
};

} // namespace

void visitCameras(std::istream& stream, const std::string& key, const std::function<void(const json&)>& visit,
                  const std::function<void()>& forget) {
    CameraListReader reader(key, visit, forget);
    constexpr bool kToTheEndOfTheFile = false;
    json::sax_parse(stream, &reader, json::input_format_t::json, kToTheEndOfTheFile);
    reader.finish();
}

} // namespace CameraInterface::SimulatedAdapter
