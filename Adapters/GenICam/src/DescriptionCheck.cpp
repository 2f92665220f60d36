// SPDX-License-Identifier: Apache-2.0

#include "DescriptionCheck.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Numbers.h"

namespace GenICamAdapter {

namespace {

// More than any description has.
constexpr std::size_t kMostElements = 500000;
constexpr std::size_t kMostReferences = 2000000;
constexpr std::size_t kLongestFormula = 16384;
constexpr std::int64_t kLongestRegister = std::int64_t{16} << 20;
/// Features that are read one for another, each of which may ask the camera.
constexpr std::uint64_t kMostEvaluations = 100000;
constexpr std::size_t kDeepestEvaluation = 200;

/// What a reference is followed for.
enum class Aspect : std::uint8_t { Value, Limit };

struct ReferenceRow {
    std::string_view element;
    bool forValue;   ///< followed to compute a value
    bool forLimit;   ///< followed to compute a minimum, maximum or increment
    bool toLimitToo; ///< the limits of what it names are asked for limits, and not its value
};

constexpr ReferenceRow kReferences[] = {
    {"pValue", true, true, true},        {"pValueCopy", true, false, false}, {"pValueDefault", true, true, true},
    {"pValueIndexed", true, true, true}, {"pVariable", true, true, false},   {"pIndex", true, true, false},
    {"pAddress", true, false, false},    {"pLength", true, false, false},    {"pMin", false, true, false},
    {"pMax", false, true, false},        {"pInc", false, true, false},       {"pCommandValue", true, false, false},
};
constexpr std::string_view kFormulas[] = {"Formula", "FormulaTo", "FormulaFrom", "Expression"};
/// Registers that Aravis reads as wholes whose size it does not check.
constexpr std::string_view kNumberRegisters[] = {"IntReg", "MaskedIntReg", "FloatReg", "StructReg"};

template <typename Range>
bool contains(const Range& range, std::string_view name) {
    return std::find(std::begin(range), std::end(range), name) != std::end(range);
}

std::string_view textOfXml(const xmlChar* text) {
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

/// Which features are computed from which others.
class References {
public:
    using Id = std::size_t;

    Id add() {
        m_Nodes.emplace_back();
        return m_Nodes.size() - 1;
    }
    Id named(std::string_view name) {
        const auto [place, isNew] = m_Ids.try_emplace(std::string(name), m_Nodes.size());
        return isNew ? add() : place->second;
    }
    void refer(Id from, const ReferenceRow& row, Id to, Aspect used = Aspect::Value) {
        if (row.forValue) {
            m_Nodes[from].targets[0].push_back(target(to, used));
        }
        if (row.forLimit) {
            m_Nodes[from].targets[1].push_back(target(to, row.toLimitToo ? Aspect::Limit : Aspect::Value));
        }
    }

    /// @throws std::runtime_error  a computation would not end, or not soon
    void requireEnd() const {
        std::vector<std::uint64_t> costs(m_Nodes.size() * 2, 0); // 0: not known yet
        for (std::size_t start = 0; start < costs.size(); ++start) {
            if (costs[start] == 0) {
                measure(start, costs);
            }
        }
    }

private:
    struct Node {
        std::array<std::vector<std::size_t>, 2> targets; ///< by aspect
    };
    struct Step {
        std::size_t place;
        std::size_t next = 0;
        std::uint64_t cost = 1;
    };
    static constexpr std::uint64_t kInProgress = UINT64_MAX;

    static std::size_t target(Id node, Aspect aspect) { return node * 2 + static_cast<std::size_t>(aspect); }

    /// Without recursion, since the description decides on the depth.
    void measure(std::size_t start, std::vector<std::uint64_t>& costs) const {
        std::vector<Step> path{{start}};
        costs[start] = kInProgress;
        while (!path.empty()) {
            Step& step = path.back();
            const auto& targets = m_Nodes[step.place / 2].targets[step.place % 2];
            if (step.next == targets.size()) {
                costs[step.place] = step.cost;
                path.pop_back();
                continue;
            }
            const std::size_t place = targets[step.next];
            if (costs[place] == kInProgress) {
                throw std::runtime_error("Its description has features that refer to themselves.");
            }
            if (costs[place] == 0) {
                costs[place] = kInProgress;
                path.push_back({place});
            } else {
                step.cost += costs[place];
                ++step.next;
            }
            if (path.size() > kDeepestEvaluation || path.back().cost > kMostEvaluations) {
                throw std::runtime_error("Its description has features that refer to too many others.");
            }
        }
    }

    std::vector<Node> m_Nodes;
    std::unordered_map<std::string, Id> m_Ids;
};

xmlParserCtxtPtr createContext(const std::string& xml) {
    // libxml2 does not initialise itself safely when several threads begin at once.
    static const bool isInitialised = [] {
        xmlInitParser();
        return true;
    }();
    static_cast<void>(isInitialised);
    return xmlCreateMemoryParserCtxt(xml.data(), static_cast<int>(xml.size()));
}

/// Reads a description with the parser that Aravis uses, so that both see the same document.
class Reader {
public:
    explicit Reader(const std::string& xml) : m_Context(createContext(xml), xmlFreeParserCtxt) {
        if (!m_Context) {
            throw std::runtime_error("Its description is empty.");
        }
        xmlSAXHandler& handler = *m_Context->sax;
        handler = {};
        handler.initialized = XML_SAX2_MAGIC;
        handler.internalSubset = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
            of(self).run([] { throw std::runtime_error("Its description has a document type of its own."); });
        };
        handler.startElementNs = [](void* self, const xmlChar* name, const xmlChar*, const xmlChar*, int,
                                    const xmlChar**, int count, int, const xmlChar** attributes) {
            of(self).run([&] { of(self).begin(textOfXml(name), attributes, count); });
        };
        handler.endElementNs = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
            of(self).run([&] { of(self).end(); });
        };
        handler.characters = [](void* self, const xmlChar* text, int size) {
            of(self).run([&] {
                of(self).append({reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)});
            });
        };
        handler.cdataBlock = handler.characters;
        handler.serror = [](void*, xmlErrorPtr) {}; // otherwise it is printed
        m_Context->userData = this;
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() = default;

    /// @return bytes of the document
    std::size_t read() {
        xmlParseDocument(m_Context.get());
        if (m_Refusal) {
            std::rethrow_exception(m_Refusal);
        }
        if (m_Size == 0) {
            throw std::runtime_error("Its description is no complete XML document.");
        }
        m_References.requireEnd();
        return m_Size;
    }

private:
    struct Element {
        std::optional<References::Id> node; ///< of a feature, or of what has a feature's references
        const ReferenceRow* reference = nullptr;
        Aspect used = Aspect::Value; ///< of what it refers to
        bool isFormula = false;
        bool isLength = false;
        bool isNumberRegister = false;
        std::string text; ///< if it matters
    };

    static Reader& of(void* self) { return *static_cast<Reader*>(self); }

    /// Keeps exceptions from the parser, which is written in C.
    template <typename Action>
    void run(Action action) noexcept {
        try {
            action();
        } catch (...) {
            m_Refusal = m_Refusal ? m_Refusal : std::current_exception();
            xmlStopParser(m_Context.get());
        }
    }

    std::size_t position() const {
        const long place = xmlByteConsumed(m_Context.get());
        if (place < 0) {
            throw std::runtime_error("Its description has an encoding that cannot be followed.");
        }
        return static_cast<std::size_t>(place);
    }

    void begin(std::string_view name, const xmlChar** attributes, int count) {
        if (m_Open.empty() && name != "RegisterDescription") {
            throw std::runtime_error("Its description is none of GenICam.");
        }
        if (++m_Elements > kMostElements) {
            throw std::runtime_error("Its description has too many parts.");
        }
        Element element;
        element.isFormula = contains(kFormulas, name);
        element.isLength = name == "Length";
        element.isNumberRegister = contains(kNumberRegisters, name);
        const auto* const row = std::find_if(std::begin(kReferences), std::end(kReferences),
                                             [name](const ReferenceRow& one) { return one.element == name; });
        const std::string_view ownName = valueOfName(attributes, count);
        if (row != std::end(kReferences)) {
            element.reference = row;
            // A variable "X.Max" is the maximum of what it refers to.
            const bool isOfLimit = name == "pVariable" && ownName.find('.') != std::string_view::npos;
            element.used = isOfLimit ? Aspect::Limit : Aspect::Value;
        } else if (!ownName.empty() && !m_Open.empty()) {
            element.node = m_References.named(ownName);
        } else if (name == "StructReg") {
            element.node = m_References.add();
        }
        if (name == "StructEntry" && element.node && m_Open.back().node) {
            m_References.refer(*element.node, kReferences[0], *m_Open.back().node);
        }
        m_Open.push_back(std::move(element));
    }

    void append(std::string_view text) {
        if (m_Open.empty()) {
            return; // broken before its first tag
        }
        Element& element = m_Open.back();
        if (element.isFormula && element.text.size() + text.size() > kLongestFormula) {
            throw std::runtime_error("Its description has a formula that is too long.");
        }
        if (element.isFormula || element.reference != nullptr || element.isLength) {
            element.text += text;
        }
    }

    void end() {
        const Element element = std::move(m_Open.back());
        m_Open.pop_back();
        if (element.reference != nullptr) {
            refer(element);
        }
        if (element.isLength) {
            requireLength(element.text);
        } else if (element.reference != nullptr && element.reference->element == "pLength" && !m_Open.empty() &&
                   m_Open.back().isNumberRegister) {
            throw std::runtime_error("Its description has a number of variable length.");
        }
        if (m_Open.empty()) {
            m_Size = position();
        }
    }

    /// Elements within a feature's element, such as the formula of an address, refer for the feature, too.
    void refer(const Element& element) {
        const References::Id target = m_References.named(trimmed(element.text));
        for (const Element& outer : m_Open) {
            if (outer.node) {
                if (++m_ReferenceCount > kMostReferences) {
                    throw std::runtime_error("Its description has too many references.");
                }
                m_References.refer(*outer.node, *element.reference, target, element.used);
            }
        }
    }

    static void requireLength(const std::string& text) {
        std::int64_t length = -1;
        try {
            length = parseInteger(text);
        } catch (const std::logic_error&) {
            // is refused
        }
        if (length < 0 || length > kLongestRegister) {
            throw std::runtime_error("Its description has a register of invalid length.");
        }
    }

    static std::string_view valueOfName(const xmlChar** attributes, int count) {
        for (int i = 0; i < count; ++i) { // local name, prefix, URI, begin and end of the value
            const xmlChar** const attribute = attributes + std::ptrdiff_t{5} * i;
            if (textOfXml(attribute[0]) == "Name") {
                return {reinterpret_cast<const char*>(attribute[3]),
                        static_cast<std::size_t>(attribute[4] - attribute[3])};
            }
        }
        return {};
    }

    const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> m_Context;
    References m_References;
    std::vector<Element> m_Open;
    std::size_t m_Elements = 0;
    std::size_t m_ReferenceCount = 0;
    std::size_t m_Size = 0;
    std::exception_ptr m_Refusal;
};

} // namespace

std::size_t checkDescription(const std::string& xml) {
    if (xml.size() > kLargestXml) {
        throw std::runtime_error("Its description is too large.");
    }
    const std::size_t size = Reader(xml).read();
    if (xml.find('\0') < size) {
        throw std::runtime_error("Its description has an encoding of more than one byte.");
    }
    return size;
}

} // namespace GenICamAdapter
