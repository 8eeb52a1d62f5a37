#include "platform/ipc/VariantCoding.h"

#include <algorithm>
#include <cerrno>
#include <ranges>
#include <string>
#include <utility>

#include <glib.h>

namespace platform {

namespace {

constexpr std::string_view kErrorDomainKey = "domain";
constexpr std::string_view kErrorCodeKey = "code";
constexpr std::string_view kErrorTextKey = "localizedDescription";
constexpr std::string_view kErrorInformationKey = "userInfo";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

Error tooDeep() {
    return Error::withDescription(kPOSIXErrorDomain, EMSGSIZE, "The values lie too deep in each other for a message.");
}

Error malformed(std::string_view what) {
    return Error::withDescription(kPOSIXErrorDomain, EBADMSG, what);
}

std::string messageText(std::u16string_view text) {
    std::string bytes = utf8FromUTF16(text);
    for (std::size_t nul = bytes.find('\0'); nul != std::string::npos; nul = bytes.find('\0', nul))
        bytes.replace(nul, 1, kReplacement);
    return bytes;
}

Variant owned(GVariant* variant) {
    return Variant(g_variant_ref_sink(variant));
}

Variant textVariant(std::u16string_view text) {
    return owned(g_variant_new_string(messageText(text).c_str()));
}

// Adds to an array or tuple under construction; frees what was added when it is left unfinished.
class Builder {
  public:
    explicit Builder(const GVariantType* type) { g_variant_builder_init(&builder_, type); }
    ~Builder() { g_variant_builder_clear(&builder_); }
    Builder(const Builder&) = delete;
    Builder& operator=(const Builder&) = delete;

    void add(const Variant& variant) { g_variant_builder_add_value(&builder_, variant.get()); }
    void addBoxed(const Variant& variant) { g_variant_builder_add(&builder_, "v", variant.get()); }
    void addEntry(const std::string& key, const Variant& variant) {
        g_variant_builder_add(&builder_, "{sv}", key.c_str(), variant.get());
    }
    Variant end() { return owned(g_variant_builder_end(&builder_)); }

  private:
    GVariantBuilder builder_;
};

// One direction: values to variants. Recursion ends at kMaximumMessageDepth.
class Encoder {
  public:
    explicit Encoder(std::span<const ListSignature> lists) : lists_(lists) {}

    Result<Variant> value(const Value& value, std::string_view key, int depth) const {
        if (depth > kMaximumMessageDepth) return failure(tooDeep());
        if (const auto* boolean = value.as<bool>()) return owned(g_variant_new_boolean(*boolean));
        if (const auto* integer = value.as<std::int64_t>()) return owned(g_variant_new_int64(*integer));
        if (const auto* real = value.as<double>()) return owned(g_variant_new_double(*real));
        if (const auto* text = value.as<std::u16string>()) return textVariant(*text);
        if (const auto* data = value.as<Data>())
            return owned(g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, data->bytes().data(), data->size(), 1));
        if (const auto* date = value.as<Date>()) return owned(g_variant_new_string(date->iso8601().c_str()));
        if (const auto* uid = value.as<UID>()) return owned(g_variant_new_uint64(uid->value));
        if (const auto* list = value.as<Array>()) return array(*list, key, depth);
        if (const auto* members = value.as<Dictionary>()) return dictionary(*members, depth);
        if (const Error* error = value.asError()) return errorVariant(*error, depth);
        return Builder(G_VARIANT_TYPE("av")).end(); // null, inside a list
    }

    Result<Variant> dictionary(const Dictionary& members, int depth) const {
        Builder builder(G_VARIANT_TYPE_VARDICT);
        for (const auto& [key, member] : members) {
            if (member.isNull()) continue;
            const Variant encoded = TRY(value(member, key, depth + 1));
            builder.addEntry(messageText(utf16FromUTF8(key)), encoded);
        }
        return builder.end();
    }

  private:
    Result<Variant> array(const Array& list, std::string_view key, int depth) const {
        const std::string element = elementOf(list, key);
        const std::string type = "a" + element;
        Builder builder(G_VARIANT_TYPE(type.c_str()));
        for (const Value& member : list) {
            const Variant encoded = TRY(value(member, {}, depth + 1));
            element == "v" ? builder.addBoxed(encoded) : builder.add(encoded);
        }
        return builder.end();
    }

    std::string elementOf(const Array& list, std::string_view key) const {
        if (list.empty()) {
            const auto row = std::ranges::find(lists_, key, &ListSignature::key);
            return row == lists_.end() ? "v" : std::string(row->element);
        }
        if (std::ranges::all_of(list, [](const Value& member) { return member.as<std::u16string>() != nullptr; }))
            return "s";
        if (std::ranges::all_of(list, [](const Value& member) { return member.as<Dictionary>() != nullptr; }))
            return "a{sv}";
        return "v";
    }

    Result<Variant> errorVariant(const Error& error, int depth) const {
        return dictionary({{std::string(kErrorDomainKey), Value(error.domain)},
                           {std::string(kErrorCodeKey), Value(error.code)},
                           {std::string(kErrorTextKey), Value(error.localizedDescription())},
                           {std::string(kErrorInformationKey), Value(error.userInfo)}},
                          depth);
    }

    std::span<const ListSignature> lists_;
};

Value dictionaryOrError(Dictionary members) {
    const Value* domain = find(members, kErrorDomainKey);
    const Value* code = find(members, kErrorCodeKey);
    const Value* text = find(members, kErrorTextKey);
    const Value* information = find(members, kErrorInformationKey);
    const bool isError = members.size() == 4 && domain && domain->as<std::u16string>() && code &&
                         code->as<std::int64_t>() && text && text->as<std::u16string>() && information &&
                         information->as<Dictionary>();
    if (!isError) return Value(std::move(members));
    return Value(Error(domain->utf8(), code->integerValue(), *information->as<Dictionary>()));
}

// The other direction. The library has bounded the depth of what comes over a bus; bytes of a worker are bounded here.
class Decoder {
  public:
    Result<Value> value(GVariant* variant, int depth) const {
        if (depth > kContainers) return failure(malformed("A message's values lie too deep in each other."));
        switch (g_variant_classify(variant)) {
        case G_VARIANT_CLASS_BOOLEAN:
            return Value(g_variant_get_boolean(variant) != FALSE);
        case G_VARIANT_CLASS_BYTE:
            return Value(g_variant_get_byte(variant));
        case G_VARIANT_CLASS_INT16:
            return Value(g_variant_get_int16(variant));
        case G_VARIANT_CLASS_UINT16:
            return Value(g_variant_get_uint16(variant));
        case G_VARIANT_CLASS_INT32:
            return Value(g_variant_get_int32(variant));
        case G_VARIANT_CLASS_UINT32:
            return Value(g_variant_get_uint32(variant));
        case G_VARIANT_CLASS_INT64:
            return Value(std::int64_t{g_variant_get_int64(variant)});
        case G_VARIANT_CLASS_UINT64:
            return Value(std::uint64_t{g_variant_get_uint64(variant)});
        case G_VARIANT_CLASS_DOUBLE:
            return Value(g_variant_get_double(variant));
        case G_VARIANT_CLASS_STRING:
        case G_VARIANT_CLASS_OBJECT_PATH:
        case G_VARIANT_CLASS_SIGNATURE:
            return Value(g_variant_get_string(variant, nullptr));
        case G_VARIANT_CLASS_VARIANT:
            return value(Variant(g_variant_get_variant(variant)).get(), depth + 1);
        case G_VARIANT_CLASS_ARRAY:
            return array(variant, depth);
        case G_VARIANT_CLASS_TUPLE:
            return Value(TRY(members(variant, depth)));
        default:
            return failure(malformed("A message holds a value of a kind that has no use here."));
        }
    }

    Result<Array> members(GVariant* container, int depth) const {
        Array list;
        const gsize count = g_variant_n_children(container);
        list.reserve(count);
        for (gsize index = 0; index < count; ++index) {
            const Variant member(g_variant_get_child_value(container, index));
            list.push_back(TRY(value(member.get(), depth + 1)));
        }
        return list;
    }

  private:
    static constexpr int kContainers = 64;

    Result<Value> array(GVariant* variant, int depth) const {
        if (g_variant_is_of_type(variant, G_VARIANT_TYPE_BYTESTRING)) {
            gsize size = 0;
            const void* bytes = g_variant_get_fixed_array(variant, &size, 1);
            return Value(Data(std::string(static_cast<const char*>(bytes), size)));
        }
        if (!g_variant_type_is_subtype_of(g_variant_get_type(variant), G_VARIANT_TYPE_DICTIONARY))
            return Value(TRY(members(variant, depth)));
        if (!g_variant_is_of_type(variant, G_VARIANT_TYPE("a{s*}")))
            return failure(malformed("A message's dictionary has keys that are no strings."));
        Dictionary entries;
        const gsize count = g_variant_n_children(variant);
        for (gsize index = 0; index < count; ++index) {
            const Variant entry(g_variant_get_child_value(variant, index));
            const Variant key(g_variant_get_child_value(entry.get(), 0));
            const Variant member(g_variant_get_child_value(entry.get(), 1));
            Value decoded = TRY(value(member.get(), depth + 1));
            entries.insert_or_assign(g_variant_get_string(key.get(), nullptr), std::move(decoded));
        }
        return dictionaryOrError(std::move(entries));
    }
};

// A value as a member of a declared type; what does not convert is the caller's mistake and answered as such.
Result<Variant> converted(const Encoder& encoder, const Value& value, const GVariantType* type) {
    if (g_variant_type_equal(type, G_VARIANT_TYPE_UINT64))
        return owned(g_variant_new_uint64(static_cast<guint64>(value.integerValue())));
    if (g_variant_type_equal(type, G_VARIANT_TYPE_UINT32))
        return owned(g_variant_new_uint32(static_cast<guint32>(value.integerValue())));
    if (g_variant_type_equal(type, G_VARIANT_TYPE_OBJECT_PATH)) {
        const std::string path = value.utf8();
        if (!g_variant_is_object_path(path.c_str())) return failure(malformed("\"" + path + "\" is no object path."));
        return owned(g_variant_new_object_path(path.c_str()));
    }
    if (g_variant_type_equal(type, G_VARIANT_TYPE_STRING_ARRAY)) {
        Builder builder(type);
        if (const auto* list = value.as<Array>())
            for (const Value& member : *list) builder.add(textVariant(utf16FromUTF8(member.utf8())));
        return builder.end();
    }
    Variant variant = TRY(encoder.value(value, {}, 1));
    if (!g_variant_is_of_type(variant.get(), type)) return failure(malformed("A value is not of its declared type."));
    return variant;
}

} // namespace

void VariantRelease::operator()(_GVariant* variant) const {
    g_variant_unref(variant);
}

Result<Variant> variantTuple(const Array& values, std::string_view signature, std::span<const ListSignature> lists) {
    const std::string text(signature);
    if (!g_variant_type_string_is_valid(text.c_str())) return failure(malformed("A signature is not valid."));
    const GVariantType* type = G_VARIANT_TYPE(text.c_str());
    if (!g_variant_type_is_tuple(type) || g_variant_type_n_items(type) != values.size())
        return failure(malformed("The values do not match the signature " + text + "."));
    const Encoder encoder(lists);
    Builder builder(type);
    const GVariantType* member = g_variant_type_first(type);
    for (const Value& value : values) {
        builder.add(TRY(converted(encoder, value, member)));
        member = g_variant_type_next(member);
    }
    return builder.end();
}

Result<Variant> variantOf(const Value& value, std::span<const ListSignature> lists) {
    return Encoder(lists).value(value, {}, 1);
}

Result<Value> valueOf(_GVariant* variant) {
    return Decoder().value(variant, 0);
}

Result<Array> valuesOf(_GVariant* tuple) {
    return Decoder().members(tuple, 0);
}

Result<std::string> encodedMessage(const Dictionary& dictionary, std::span<const ListSignature> lists) {
    const Variant variant = TRY(Encoder(lists).dictionary(dictionary, 0));
    const auto* bytes = static_cast<const char*>(g_variant_get_data(variant.get()));
    return bytes ? std::string(bytes, g_variant_get_size(variant.get())) : std::string();
}

Result<Dictionary> decodedMessage(std::string_view bytes) {
    GBytes* copied = g_bytes_new(bytes.data(), bytes.size());
    const Variant variant = owned(g_variant_new_from_bytes(G_VARIANT_TYPE_VARDICT, copied, FALSE));
    g_bytes_unref(copied);
    if (!g_variant_is_normal_form(variant.get())) return failure(malformed("A message's bytes are damaged."));
    Value value = TRY(valueOf(variant.get()));
    if (auto* members = value.as<Dictionary>()) return std::move(*members);
    return failure(malformed("A message is an error where a dictionary belongs."));
}

} // namespace platform
