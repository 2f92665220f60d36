// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "../Export.h"
#include "../PropertyValueEnumerations.h"

namespace CameraInterface {

/// A named setting or reading of a camera. Every value travels as text.
///
/// Reentrant: a property has no locks and is used from the thread that calls into its camera. It belongs to its camera
/// and lives as long as the camera does.
class QUILL_API Property {
public:
    /// Copies name, type, callback and the links (not the partners behind them).
    Property(const Property&) = default;
    Property& operator=(const Property&) = default;
    virtual ~Property();

    /// Writes the default value; a property that cannot be written keeps its value. Throws what getDefault() and
    /// setValue() throw.
    virtual void resetToDefault();
    /// Tells that the value may have changed without a write through this property.
    /// @param notifyLinked whether to notify the linked partners as well
    virtual void update(bool notifyLinked);
    /// The limits of the value, as text.
    virtual std::string getMinimum() = 0;
    virtual std::string getMaximum() = 0;
    virtual std::string getValue() = 0;
    virtual std::string getDefault() = 0;
    /// Whether the property can never be written.
    virtual bool isReadOnly() = 0;
    /// Whether the property can be written now.
    virtual bool isAvailableForWriting() = 0;
    /// Whether the value must be one of getValueList().
    virtual bool isDiscrete() = 0;
    /// The allowed values of a discrete property; empty for a continuous one.
    virtual std::vector<std::string> getValueList() = 0;
    /// Writes a value, notifies the linked partners and runs the on-change callback on this thread. Exceptions of
    /// both pass.
    ///
    /// What a text does depends on the kind of property, and PropertyNames.h says of which kind each is:
    /// - A number of the camera, and a region, is limited to the range: getValue() returns what was written. A number
    /// in
    ///   memory is not.
    /// - A discrete property takes one of getValueList(), which is never corrected; a frame rate may be a part of one.
    /// - A write that is not possible (isReadOnly(), isAvailableForWriting()) is ignored without a word by most.
    /// @throws std::invalid_argument, std::out_of_range  a text that is no number, or none of the frame rates: standard
    ///     exceptions, outside the family of KestrelException
    /// @throws KestrelException "PropertyValueConversion"  not one of the texts of a discrete property
    /// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  the same of a switch of the camera
    /// @throws KestrelException_Property "PropertyWriteFailure", "PropertyReadFailure", "PropertyRangeReadFailure",
    ///     "PropertyErrorUnknown", "PropertyUnknown"  the camera does not answer, or refuses
    /// @throws KestrelException_Property "PropertyReadOnly"  a constant that the camera would let be written
    virtual void setValue(const std::string& value) = 0;

    std::string getName() const;
    PROPERTY_TYPE getType() const;

    /// Reads the value.
    operator std::string();
    /// Writes the value; see setValue().
    void operator=(const std::string& value); // NOLINT(misc-unconventional-assign-operator): assigns to the camera

    /// Makes @p other refresh whenever this property changes. One way; a partner of the same name stays.
    /// @p other must live as long as the link is there.
    void addLinkedProperty(Property& other);
    void removeLinkedProperty(Property& other);

    /// Replaces the function that is called after every change; an empty one clears it.
    void registerOnChangeCallback(std::function<void(Property&)> callback);
    void unregisterOnChangeCallback();

protected:
    Property(const std::string& name, const PROPERTY_TYPE& type);

    /// Updates the linked partners (in name order, one link far) if @p notifyLinked, then runs the callback.
    void onChange(bool notifyLinked);
    void executeOnChangeCallback();

private:
    std::string m_Name;
    PROPERTY_TYPE m_Type;
    std::map<std::string, Property*> m_LinkedProperties; // not owned: all belong to one camera
    std::function<void(Property&)> m_OnChangeCallback;
};

} // namespace CameraInterface
