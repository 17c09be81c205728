#include "Platform/JSONExaminer.h"

#include "Platform/UTF8.h"
#include "Platform/Value.h"

#include <simdjson.h>

namespace VeltoTouch::JSON {
namespace {

constexpr std::string_view kDoubleMark = "e0"; // behind an integer, makes it a double of the same value

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
bool isHexDigit(char c) noexcept { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// A place in the text. Each `take...` moves behind what it takes or throws the Fault that it meets.
class Examiner {
public:
    explicit Examiner(std::string_view text) noexcept
        : _start(text.data()), _end(text.data() + text.size()), _at(_start), _rewrittenUpTo(_start) {}

    void takeText() {
        while (!takeValue() || isAnotherValueToCome()) {
        }
    }

    [[nodiscard]] std::string readableText() const { return _rewritten + std::string(_rewrittenUpTo, _end); }

private:
    // False for an array or object that holds something: then only what stands before its first value is taken.
    bool takeValue() {
        skipBlanks();
        if (_closers.size() == Value::kDeepest)
            fail("nested too deep");
        if (take('['))
            return takeOpening(']');
        if (take('{'))
            return takeOpening('}');
        if (take('"'))
            takeString();
        else if (_at != _end && (*_at == '-' || isDigit(*_at)))
            takeNumber();
        else
            takeLiteral();
        return true;
    }

    bool takeOpening(char closer) {
        _closers += closer;
        skipBlanks();
        if (take(closer)) {
            _closers.pop_back();
            return true;
        }
        if (closer == '}')
            takeName();
        return false;
    }

    // Takes what stands behind a value: the ends of arrays and objects, then a comma or the end of the text.
    bool isAnotherValueToCome() {
        for (skipBlanks(); !_closers.empty(); skipBlanks()) {
            const bool isInObject = _closers.back() == '}';
            if (take(',')) {
                if (isInObject)
                    takeName();
                return true;
            }
            if (!take(_closers.back()))
                failExpecting(isInObject ? "expected ',' or '}'" : "expected ',' or ']'");
            _closers.pop_back();
        }
        if (_at != _end)
            fail("expected the end of the text");
        return false;
    }

    void takeName() {
        skipBlanks();
        if (!take('"'))
            failExpecting("expected a name in quotes");
        takeString();
        skipBlanks();
        if (!take(':'))
            failExpecting("expected ':'");
    }

    void takeLiteral() {
        for (const std::string_view literal : {"true", "false", "null"}) {
            if (_at == _end || *_at != literal.front())
                continue;
            for (const char letter : literal) {
                if (!take(letter))
                    failExpecting("expected true, false or null");
            }
            return;
        }
        failExpecting("expected a value");
    }

    // What stands behind the opening quote.
    void takeString() {
        while (!take('"')) {
            if (next() == '\\')
                takeEscape();
            else if (static_cast<unsigned char>(next()) < 0x20)
                fail("control character in a string");
            else if (const std::size_t length = UTF8::sequenceLength({_at, _end}); length != 0)
                _at += length;
            else
                fail("invalid UTF-8 in a string");
        }
    }

    // The next character of a string, which is not its last.
    [[nodiscard]] char next() const {
        if (_at == _end)
            fail("the text ends inside a string");
        return *_at;
    }

    void takeEscape() {
        const char* const start = _at++;
        if (next() != 'u') {
            if (std::string_view("\"\\/bfnrt").find(*_at) == std::string_view::npos)
                fail("unknown escape in a string");
            ++_at;
            return;
        }
        const unsigned unit = takeCodeUnit();
        const bool isFirstHalf = unit >= 0xD800 && unit <= 0xDBFF;
        const bool isSecondHalf = unit >= 0xDC00 && unit <= 0xDFFF;
        if (isSecondHalf || (isFirstHalf && !takeSecondHalf()))
            fail("half of a surrogate pair in a string", start);
    }

    bool takeSecondHalf() {
        if (next() != '\\')
            return false;
        ++_at;
        if (next() != 'u')
            return false;
        const unsigned unit = takeCodeUnit();
        return unit >= 0xDC00 && unit <= 0xDFFF;
    }

    // The letter u and four digits.
    unsigned takeCodeUnit() {
        const char* const digits = ++_at;
        for (; _at != digits + 4; ++_at) {
            if (!isHexDigit(next()))
                fail("expected a hexadecimal digit");
        }
        return static_cast<unsigned>(std::stoul(std::string(digits, _at), nullptr, 16));
    }

    void takeNumber() {
        const char* const start = _at;
        take('-');
        if (!take('0'))
            takeDigits();
        const char* const integerEnd = _at;
        if (take('.'))
            takeDigits();
        if (take('e') || take('E')) {
            if (!take('+'))
                take('-');
            takeDigits();
        }
        const std::string number(start, _at);
        if (isRead(number))
            return;
        if (_at != integerEnd || !isRead(number + std::string(kDoubleMark)))
            fail("number too large", start);
        _rewritten.append(_rewrittenUpTo, _at).append(kDoubleMark);
        _rewrittenUpTo = _at;
    }

    void takeDigits() {
        if (_at == _end || !isDigit(*_at))
            failExpecting("expected a digit");
        while (_at != _end && isDigit(*_at))
            ++_at;
    }

    // The parser is the judge of which numbers fit.
    [[nodiscard]] bool isRead(const std::string& number) { return _parser.parse(number).error() == simdjson::SUCCESS; }

    bool take(char wanted) noexcept {
        if (_at == _end || *_at != wanted)
            return false;
        ++_at;
        return true;
    }

    void skipBlanks() noexcept {
        while (take(' ') || take('\n') || take('\r') || take('\t')) {
        }
    }

    [[noreturn]] void fail(const char* cause) const { fail(cause, _at); }
    [[noreturn]] void fail(const char* cause, const char* place) const {
        throw Fault{.byte = static_cast<std::size_t>(place - _start), .cause = cause};
    }
    [[noreturn]] void failExpecting(const char* cause) const {
        if (_at != _end)
            fail(cause);
        if (_closers.empty())
            fail("the text ends too early");
        fail(_closers.back() == '}' ? "the text ends inside an object" : "the text ends inside an array");
    }

    const char* const _start;
    const char* const _end;
    const char* _at;
    std::string _closers; // of the arrays and objects around the place, innermost last
    simdjson::dom::parser _parser;
    std::string _rewritten;
    const char* _rewrittenUpTo;
};

} // namespace

Examination examine(std::string_view text) {
    Examiner examiner(text);
    try {
        examiner.takeText();
        return {.fault = std::nullopt, .readableText = examiner.readableText()};
    } catch (const Fault& fault) {
        return {.fault = fault, .readableText = {}};
    }
}

} // namespace VeltoTouch::JSON
