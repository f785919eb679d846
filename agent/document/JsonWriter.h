#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

namespace Agent {

/// Appends compact JSON to a text, value by value: places commas and colons and escapes strings.
/// Whoever writes sees to it that what is begun is ended and that members have keys.
class JsonWriter {
  public:
    /// The text must outlive the writer.
    explicit JsonWriter(std::string& out) : out_(&out) {}

    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }

    /// The key of the object's next member.
    void key(std::string_view key);
    /// The same for a key that holds nothing that needs escaping.
    void plainKey(std::string_view key) {
        separate();
        *out_ += '"';
        *out_ += key;
        *out_ += "\":";
        isFirst_ = true;
    }

    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(bool value) { plain(value ? "true" : "false"); }
    template <std::integral Number>
    void value(Number number) {
        plain(std::to_string(number));
    }
    void null() { plain("null"); }
    /// A time in seconds, to the microsecond.
    void seconds(double seconds);

    /// A value whose text holds nothing that needs escaping, such as an address, as a string.
    template <typename Value>
    void plainText(const Value& value) {
        separate();
        *out_ += '"';
        value.appendTo(*out_);
        *out_ += '"';
        isFirst_ = false;
    }

    template <typename Value>
    void member(std::string_view name, const Value& memberValue) {
        key(name);
        value(memberValue);
    }

  private:
    void begin(char bracket) {
        separate();
        *out_ += bracket;
        isFirst_ = true;
    }
    void end(char bracket) {
        *out_ += bracket;
        isFirst_ = false;
    }
    void separate() {
        if (!isFirst_) {
            *out_ += ',';
        }
    }
    void plain(std::string_view text) {
        separate();
        *out_ += text;
        isFirst_ = false;
    }

    std::string* out_;
    bool isFirst_ = true; // of its object or array, or behind its key
};

/// Appends an object of one member as a line.
template <typename Value>
void appendJsonLine(std::string& out, std::string_view key, const Value& value) {
    JsonWriter writer(out);
    writer.beginObject();
    writer.member(key, value);
    writer.endObject();
    out += '\n';
}

/// A time in seconds as a number, to the microsecond: "1.0", "1.04".
std::string secondsText(double seconds);

} // namespace Agent
