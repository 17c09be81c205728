#include "Velto/Host/Bundle.h"

#include "Platform/JSON.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <dlfcn.h>

namespace VeltoTouch {
namespace {

constexpr const char* kManifestName = "Info.json";

[[noreturn]] void fail(const std::string& what) { throw std::runtime_error(what); }
[[noreturn]] void failManifest(const std::string& what) { fail(std::string(kManifestName) + ": " + what); }

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        failManifest(std::strerror(errno));
    return {std::istreambuf_iterator<char>(file), {}};
}

// The member under a key, which must be a T.
template <class T>
const T& member(const Dictionary& dictionary, const char* key, const char* kind) {
    const auto* value = as<T>(dictionary.find(key));
    if (value == nullptr)
        failManifest(std::string("no ") + kind + " under " + key);
    return *value;
}

// The value under a key that is a UUID in any way of writing it.
const Value* findUUID(const Dictionary& dictionary, const UUID& uuid) {
    const auto entries = dictionary.entries();
    const auto found = std::ranges::find_if(entries, [&uuid](const Dictionary::Entry& entry) {
        return CFEqual(CFUUIDCreateFromString(nullptr, entry.key).get(), &uuid);
    });
    return found == entries.end() ? nullptr : found->value.get();
}

std::string factoryNameIn(const Dictionary& manifest) {
    const auto* factories =
        as<Array>(findUUID(member<Dictionary>(manifest, "CFPlugInTypes", "dictionary"), *kIOHIDServicePlugInTypeID));
    if (factories == nullptr || factories->elements().empty())
        failManifest("no factory for HID services under CFPlugInTypes");
    const auto* text = as<String>(factories->elements().front());
    const Ref<UUID> factory = text == nullptr ? nullptr : CFUUIDCreateFromString(nullptr, text->text());
    if (!factory)
        failManifest("the factory under CFPlugInTypes is no UUID");
    const auto* name = as<String>(findUUID(member<Dictionary>(manifest, "CFPlugInFactories", "dictionary"), *factory));
    if (name == nullptr || name->text().empty())
        failManifest("no function for the factory under CFPlugInFactories");
    return name->text();
}

// The loader's words, which begin with the module's path.
std::string loaderMessage(const std::string& folder) {
    const char* words = ::dlerror();
    std::string message = words == nullptr ? "the module cannot be loaded" : words;
    return message.starts_with(folder) ? message.substr(folder.size()) : message;
}

} // namespace

Bundle::Bundle(std::string folder) : _folder(std::move(folder)) {
    const Ref<Value> content = JSON::parse(contentOf(_folder + "/" + kManifestName));
    const auto* manifest = as<Dictionary>(content);
    if (manifest == nullptr)
        failManifest("no JSON object");
    _executable = member<String>(*manifest, "CFBundleExecutable", "text").text();
    if (_executable.empty() || _executable.find('/') != std::string::npos)
        failManifest("no file name under CFBundleExecutable");
    _factoryName = factoryNameIn(*manifest);
    _matching = Ref<const Dictionary>::retained(&member<Dictionary>(*manifest, "HIDMatching", "dictionary"));
}

bool Bundle::matches(HIDDeviceBackend& device) const {
    return std::ranges::all_of(_matching->entries(), [&device](const Dictionary::Entry& entry) {
        return CFEqual(device.getProperty(entry.key).get(), entry.value.get());
    });
}

CFPlugInFactoryFunction Bundle::loadFactory() const {
    const std::string folder = _folder + "/";
    void* const module = ::dlopen((folder + _executable).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (module == nullptr)
        fail(loaderMessage(folder));
    void* const factory = ::dlsym(module, _factoryName.c_str());
    if (factory == nullptr)
        fail(_executable + " has no function " + _factoryName);
    return reinterpret_cast<CFPlugInFactoryFunction>(factory);
}

} // namespace VeltoTouch
