// SPDX-License-Identifier: Apache-2.0

// Texts that are written to properties: compares numbers with the standard conversions and checks the properties'
// values, under locales with different number formats.

#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <typeinfo>

#include "Base/TextConversion.h"
#include "Exceptions/KestrelException.h"
#include "Properties/BooleanProperty.h"
#include "Properties/MemoryProperty.h"
#include "Properties/SimulatedProperty.h"
#include "Support/Input.h"

namespace {

using namespace CameraInterface;
using namespace Fuzzing;
using KestrelExceptions::KestrelException;

/// Makes streams write 1234.5 as 1.234,5.
class CommaPunctuation : public std::numpunct<char> {
public:
    CommaPunctuation() : std::numpunct<char>(1) {} // owned here, not by the locales that use it

protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Puts the process under a locale with decimal commas: always for streams, and for C functions if such a locale is
/// installed.
class CommaLocale {
public:
    CommaLocale() : m_Former(std::locale::global(std::locale(std::locale::classic(), &m_Punctuation))) {
        static const char* const installed = findInstalled();
        useForC(installed);
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    ~CommaLocale() {
        useForC("C");
        std::locale::global(m_Former);
    }

private:
    static bool useForC(const char* name) {
        return std::setlocale(LC_ALL, name) != nullptr; // NOLINT(concurrency-mt-unsafe): there is one thread
    }
    static const char* findInstalled() {
        for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8"}) {
            if (useForC(name)) {
                return name;
            }
        }
        return "C";
    }

    CommaPunctuation m_Punctuation;
    std::locale m_Former;
};

/// The result of a conversion: its number, or the type and the text of its exception.
template <typename Number>
struct Outcome {
    std::optional<Number> number;
    std::string refusal;
};

std::string described(const std::logic_error& refusal) {
    return std::string(typeid(refusal).name()) + ": " + refusal.what();
}

template <typename Number, typename Convert>
Outcome<Number> outcomeOf(const Convert& convert) {
    try {
        return {convert(), ""};
    } catch (const std::logic_error& refusal) {
        return {std::nullopt, described(refusal)};
    }
}

template <typename Number>
bool operator==(const Outcome<Number>& one, const Outcome<Number>& other) {
    const bool bothNan = one.number && other.number && *one.number != *one.number && *other.number != *other.number;
    return bothNan || (one.number == other.number && one.refusal == other.refusal);
}

template <typename Number>
Number firstWord(const std::string& text, Number before) {
    Base::extractFirstWord(text, before);
    return before;
}

/// The results of all conversions of one text.
struct Reading {
    Outcome<int> integer;
    Outcome<unsigned long> decimal, hexadecimal, automatic;
    Outcome<double> real;
    Outcome<float> single;
    std::string sixDecimals; ///< of the latter
    int intWord;
    unsigned long unsignedWord;
    double realWord;
    bool boolWord;
    std::string textWord;
    std::vector<std::string> properties;

    bool operator==(const Reading& other) const {
        return integer == other.integer && decimal == other.decimal && hexadecimal == other.hexadecimal &&
               automatic == other.automatic && real == other.real && single == other.single &&
               sixDecimals == other.sixDecimals && intWord == other.intWord && unsignedWord == other.unsignedWord &&
               realWord == other.realWord && boolWord == other.boolWord && textWord == other.textWord &&
               properties == other.properties;
    }
};

/// Writes a text to a continuous property, and writes the resulting text again.
template <typename T>
std::string writeContinuous(const T& minimum, const T& maximum, const T& value, const std::string& text) {
    MemoryProperty<T> property("P", PROPERTY_TYPE::String, minimum, maximum, value, false, false, {});
    int changes = 0;
    property.registerOnChangeCallback([&](Property&) { ++changes; });
    const std::string before = property.getValue();
    property.setValue(text);
    std::string written = property.getValue();
    require(written == before || changes == 1, "a change is reported once");
    property.setValue(written);
    require(property.getValue() == written && changes <= 1,
            "the text of a property can be written and changes nothing");
    property.resetToDefault();
    require(property.getValue() == before, "the default is restored");
    MemoryProperty<T> readOnly("P", PROPERTY_TYPE::String, minimum, maximum, value, true, false, {});
    readOnly.setValue(text);
    require(readOnly.getValue() == before, "a read-only property keeps its value");
    return written;
}

/// Whether a text is one of a discrete property's values.
bool writeDiscrete(Property& property, const std::string& text) {
    const std::vector<std::string> values = property.getValueList();
    const bool isValue = std::find(values.begin(), values.end(), text) != values.end();
    const std::string before = property.getValue();
    require(isRefused<KestrelException>([&] { property.setValue(text); }) == !isValue, "only listed values are taken");
    require(property.getValue() == (isValue ? text : before), "what is refused changes nothing");
    return isValue;
}

std::vector<std::string> writeProperties(const std::string& text) {
    MemoryProperty<int> discrete("P", PROPERTY_TYPE::Integer, 0, 1, 0, false, true, {{"0", 0}, {"1.5", 1}});
    BooleanProperty state("P", PROPERTY_TYPE::Boolean);
    SimulatedAdapter::SimulatedProperty simulated("P", PROPERTY_TYPE::String, "", "", "", false, false, {});
    simulated.setValue(text);
    require(simulated.getValue() == text, "a simulated property keeps any text");
    return {writeContinuous(0UL, 9UL, 5UL, text),
            writeContinuous(-9, 9, 5, text),
            writeContinuous(-9.0, 9.0, 0.5, text),
            writeContinuous(false, true, false, text),
            writeContinuous<std::string>("", "", "word", text),
            std::to_string(int{writeDiscrete(discrete, text)}),
            std::to_string(int{writeDiscrete(state, text)})};
}

Reading read(const std::string& text) {
    using namespace Base;
    const auto single = outcomeOf<float>([&] { return parseFloat(text); });
    return {outcomeOf<int>([&] { return parseInteger(text); }),
            outcomeOf<unsigned long>([&] { return parseUnsigned(text); }),
            outcomeOf<unsigned long>([&] { return parseUnsigned(text, 16); }),
            outcomeOf<unsigned long>([&] { return parseUnsigned(text, kAutomaticBase); }),
            outcomeOf<double>([&] { return parseDouble(text); }),
            single,
            toSixDecimals(single.number.value_or(0)),
            firstWord(text, 7),
            firstWord(text, 7UL),
            firstWord(text, 7.0),
            firstWord(text, true),
            firstWord(text, std::string("7")),
            writeProperties(text)};
}

/// The number as the standard library reads it under the C locale.
template <typename Number>
Number streamed(const std::string& text, Number before) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    if (stream >> std::ws; !stream.eof()) {
        stream >> before;
    }
    return before;
}

/// The result of the standard library's conversion on a platform whose numbers are 32 bits wide.
template <typename Number, typename Convert>
Outcome<Number> standard(const char* name, const Convert& convert) {
    try {
        return {convert(), ""};
    } catch (const std::invalid_argument&) {
        return {std::nullopt, described(std::invalid_argument(std::string("invalid ") + name + " argument"))};
    } catch (const std::out_of_range&) {
        return {std::nullopt, described(std::out_of_range(std::string(name) + " argument out of range"))};
    }
}

Outcome<unsigned long> standardUnsigned(const std::string& text, int base) {
    return standard<unsigned long>("stoul", [&]() -> unsigned long {
        const long long wide = std::stoll(text, nullptr, base);
        if (std::abs(wide) > 0xFFFFFFFFLL) {
            throw std::out_of_range("");
        }
        return static_cast<std::uint32_t>(wide);
    });
}

/// Accepts subnormal numbers, which the standard conversions may refuse.
template <typename Number>
Outcome<Number> standardReal(const char* name, const std::string& text, Number (*convert)(const char*, char**)) {
    return standard<Number>(name, [&] {
        char* end = nullptr;
        errno = 0;
        const Number number = convert(text.c_str(), &end);
        if (end == text.c_str()) {
            throw std::invalid_argument("");
        }
        if (errno == ERANGE && (number == 0 || std::isinf(number))) {
            throw std::out_of_range("");
        }
        return number;
    });
}

/// A number as the standard library prints it with @p count decimals.
std::string decimals(int count, double number) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << std::fixed << std::setprecision(count) << number;
    return stream.str();
}

/// Compares under the C locale, for which the standard conversions and the library's are the same.
void compareWithStandard(const std::string& text, const Reading& reading) {
    require(reading.integer == standard<int>("stoi", [&] { return std::stoi(text, nullptr, 0); }), "as stoi");
    require(reading.decimal == standardUnsigned(text, 10), "as stoul");
    require(reading.hexadecimal == standardUnsigned(text, 16), "as stoul in base 16");
    require(reading.automatic == standardUnsigned(text, 0), "as stoul with automatic base");
    require(reading.real == standardReal("stod", text, std::strtod), "as stod");
    require(reading.single == standardReal("stof", text, std::strtof), "as stof");
    require(reading.sixDecimals == decimals(6, reading.single.number.value_or(0)), "as a stream writes it");
    require(reading.intWord == streamed(text, 7), "as a stream reads an int");
    require(reading.unsignedWord == streamed(text, 7U), "as a stream reads an unsigned int");
    require(reading.boolWord == streamed(text, true), "as a stream reads a bool");
    require(reading.realWord == streamed(text, 7.0), "as a stream reads a double");
    require(reading.textWord == streamed(text, std::string("7")), "as a stream reads a word");
    const std::vector<std::string> continuous(reading.properties.begin(), reading.properties.begin() + 5);
    const std::vector<std::string> expected{std::to_string(streamed(text, 5U)), std::to_string(streamed(text, 5)),
                                            decimals(2, streamed(text, 0.5)), std::to_string(streamed(text, false)),
                                            streamed(text, std::string("word"))};
    require(continuous == expected, "a property holds the number that a stream reads, and prints it with two decimals");
}

void checkFormatting(const Reading& reading) {
    using namespace Base;
    require(firstWord(toText(reading.intWord), 0) == reading.intWord, "an integer comes back");
    require(firstWord(toText(reading.unsignedWord), 0UL) == reading.unsignedWord, "an unsigned number comes back");
    const std::string text = toText(reading.realWord);
    require(text.find(',') == std::string::npos && text[text.size() - 3] == '.', "two decimals behind a point");
    require(toText(firstWord(text, 0.0)) == text, "a number comes back to two decimals");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Input(data, size).text();
    const Reading reading = read(text);
    compareWithStandard(text, reading);
    checkFormatting(reading);
    const CommaLocale locale;
    require(read(text) == reading, "no locale changes a number");
    checkFormatting(reading);
    return 0;
}
