// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "../Export.h"
#include "../PropertyValueEnumerations.h"

namespace CameraInterface {

/// For whom a property is, as cameras with a GenICam description say: each level includes those before it.
enum class PropertyVisibility { Beginner, Expert, Guru, Invisible };

/// A named setting or reading of a camera. Every value travels as text.
///
/// Reentrant: a property has no locks and is used from the thread that uses its camera. The camera owns it; it lives as
/// long as the camera does.
class QUILL_API Property {
public:
    /// Copies name, type, callback and links (not the linked properties).
    Property(const Property&) = default;
    Property& operator=(const Property&) = default;
    virtual ~Property();

    /// Writes the default value. A property that cannot be written keeps its value. Throws what getDefault() and
    /// setValue() throw.
    virtual void resetToDefault();
    /// Reports that the value may have changed other than through this property.
    /// @param notifyLinked whether to notify the linked properties as well
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
    /// Writes a value, notifies the linked properties and runs the on-change callback on the calling thread. Their
    /// exceptions pass through.
    ///
    /// The effect of a text depends on the kind of property; PropertyNames.h gives the kind of each:
    /// - A number of the camera, or of its region, is limited to the range; getValue() returns the value written.
    ///   A number in memory is not limited.
    /// - A discrete property accepts only the texts of getValueList(); a frame rate also accepts a part of one.
    /// - Most properties silently ignore a write while they cannot be written (isReadOnly(), isAvailableForWriting()).
    /// @throws std::invalid_argument, std::out_of_range  the text is not a number, or none of the frame rates: standard
    ///     exceptions, not derived from KestrelException
    /// @throws KestrelException "PropertyValueConversion"  not one of the texts of a discrete property
    /// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  the same for a switch of the camera
    /// @throws KestrelException_Property "PropertyWriteFailure", "PropertyReadFailure", "PropertyRangeReadFailure",
    ///     "PropertyErrorUnknown", "PropertyUnknown"  the camera does not answer, or refuses
    /// @throws KestrelException_Property "PropertyReadOnly"  a constant that the camera reports as writable
    virtual void setValue(const std::string& value) = 0;

    // What people need to know about a property. For a name of PropertyNames.h, one table of the library says it;
    // elsewhere, and where nobody knows, the text is empty.

    /// The unit of the value and its limits: "ms", "fps", "px", "DN" for sample values, ... A property without a unit,
    /// such as a factor, has an empty text.
    virtual std::string getUnit();
    /// The step, as text, of which the value must be a multiple. Throws what getValue() of the property that holds the
    /// step throws, such as "Unit Width" for "Width".
    virtual std::string getIncrement();
    /// One sentence.
    virtual std::string getDescription();
    /// The category of the Standard Features Naming Convention, in words: "Image Format Control", ...
    virtual std::string getCategory();
    /// For whom the property is; Beginner unless the camera says otherwise.
    virtual PropertyVisibility getVisibility();

    std::string getName() const;
    PROPERTY_TYPE getType() const;

    /// Reads the value.
    operator std::string();
    /// Writes the value; see setValue().
    void operator=(const std::string& value); // NOLINT(misc-unconventional-assign-operator): assigns to the camera

    /// Makes @p other update whenever this property changes, not the reverse. Does nothing if a property of that name
    /// is linked already.
    /// @p other must outlive the link.
    void addLinkedProperty(Property& other);
    void removeLinkedProperty(Property& other);

    /// Replaces the function that is called after every change; an empty function clears it.
    void registerOnChangeCallback(std::function<void(Property&)> callback);
    void unregisterOnChangeCallback();

protected:
    Property(const std::string& name, const PROPERTY_TYPE& type);

    /// If @p notifyLinked, updates the linked properties, in name order and not the properties linked to them; then
    /// runs the callback.
    void onChange(bool notifyLinked);
    void executeOnChangeCallback();

private:
    friend class Camera;

    std::string m_Name;
    PROPERTY_TYPE m_Type;
    Property* m_IncrementProperty = nullptr;             // not owned: of the same camera
    std::map<std::string, Property*> m_LinkedProperties; // not owned: all belong to one camera
    std::function<void(Property&)> m_OnChangeCallback;
    std::function<void()> m_Observer; // the camera's own; called before the callback
};

} // namespace CameraInterface
