// A host in plain C that was built apart: it declares both tables itself and includes no header of ours. Leads services
// through whole lives that end with dlclose, and checks the boundary byte by byte and every call without a device.
//
//   plain_host MODULE
#define _DEFAULT_SOURCE

#include <dlfcn.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

typedef struct {
    uint8_t bytes[16];
} UUIDBytes;

typedef struct {
    void* reserved;
    int32_t (*QueryInterface)(void* self, UUIDBytes interface, void** handle);
    uint32_t (*AddRef)(void* self);
    uint32_t (*Release)(void* self);
    uint16_t version;
    uint16_t revision;
    int32_t (*Probe)(void* self, const void* properties, uint32_t service, int32_t* order);
    int32_t (*Start)(void* self, const void* properties, uint32_t service);
    int32_t (*Stop)(void* self);
} PlugIn;

typedef void EventCallback(void* target, void* refcon, void* sender, void* event, uint32_t options);

typedef struct {
    void* reserved;
    int32_t (*QueryInterface)(void* self, UUIDBytes interface, void** handle);
    uint32_t (*AddRef)(void* self);
    uint32_t (*Release)(void* self);
    bool (*open)(void* self, uint32_t options);
    void (*close)(void* self, uint32_t options);
    void* (*copyProperty)(void* self, const void* key);
    bool (*setProperty)(void* self, const void* key, void* value);
    void (*setEventCallback)(void* self, EventCallback* callback, void* target, void* refcon);
    void (*scheduleWithDispatchQueue)(void* self, void* queue);
    void (*unscheduleFromDispatchQueue)(void* self, void* queue);
    void* (*copyEvent)(void* self, uint32_t type, void* matching, uint32_t options);
    int32_t (*setOutputEvent)(void* self, void* event);
} Service;

typedef PlugIn** Factory(const void* allocator, const void* type);

// The platform's functions. A reference comes back in memory, as C returns a structure too large for registers.
typedef struct {
    void* object;
    void* unused[3];
} Returned;
typedef struct {
    size_t length;
    const char* characters;
} Text;
const void* constantUUID(const void* allocator, const UUIDBytes* bytes) __asm__(
    "_ZN10VeltoTouch30CFUUIDGetConstantUUIDWithBytesEPKNS_6ObjectERKSt5arrayIhLm16EE");
Returned parseJSON(Text text) __asm__("_ZN10VeltoTouch4JSON5parseESt17basic_string_viewIcSt11char_traitsIcEE");
Returned createQueue(const char* label,
                     uint8_t quality) __asm__("_ZN10VeltoTouch21dispatch_queue_createEPKcNS_20dispatch_qos_class_tE");
bool equal(const void* a, const void* b) __asm__("_ZN10VeltoTouch7CFEqualEPKNS_6ObjectES2_");
void release(const void* object) __asm__("_ZN10VeltoTouch9CFReleaseEPKNS_6ObjectE");

// PlainHostDevice.cpp
uint32_t registerTestDevice(void);
void sendFirmwareReset(void);
void drainQueue(void* queue);

static const UUIDBytes kServiceType = {
    {0x05, 0x16, 0xB5, 0x63, 0xB1, 0x5B, 0x11, 0xDA, 0x96, 0xEB, 0x00, 0x14, 0x51, 0x97, 0x58, 0xEF}};
static const UUIDBytes kPlugInInterface = {
    {0xC2, 0x44, 0xE8, 0x58, 0x10, 0x9C, 0x11, 0xD4, 0x91, 0xD4, 0x00, 0x50, 0xE4, 0xC6, 0x42, 0x6F}};
static const UUIDBytes kServiceInterface = {
    {0x6F, 0xE2, 0x2A, 0xBF, 0x68, 0xB9, 0x11, 0xDB, 0xA7, 0x1F, 0x00, 0x16, 0xCB, 0xC1, 0x10, 0xF7}};
static const UUIDBytes kBasicUnknown = {{0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

#define CHECK(condition)                                                                                               \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                                            \
            exit(1);                                                                                                   \
        }                                                                                                              \
    } while (0)

static UUIDBytes withChangedByte(UUIDBytes uuid, int index) {
    uuid.bytes[index] ^= 1;
    return uuid;
}

static Factory* load(const char* path, void** module) {
    *module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    CHECK(*module != NULL);
    void* const symbol = dlsym(*module, "VeltoTouchHIDServiceFactory");
    CHECK(symbol != NULL);
    Factory* factory = NULL;
    memcpy(&factory, &symbol, sizeof factory);
    return factory;
}

static PlugIn** make(Factory* factory) { return factory(NULL, constantUUID(NULL, &kServiceType)); }

static Service** serviceOf(PlugIn** plugIn) {
    void* handle = NULL;
    CHECK((*plugIn)->QueryInterface(plugIn, kServiceInterface, &handle) == 0);
    return handle;
}

static void checkFactory(Factory* factory) {
    CHECK(factory(NULL, NULL) == NULL);
    for (int i = 0; i < 16; ++i) {
        const UUIDBytes type = withChangedByte(kServiceType, i);
        CHECK(factory(NULL, constantUUID(NULL, &type)) == NULL);
    }
    PlugIn** const plugIn = make(factory);
    CHECK(plugIn != NULL && (*plugIn)->version == 1 && (*plugIn)->revision == 0);
    CHECK((*plugIn)->AddRef(plugIn) == 2 && (*plugIn)->Release(plugIn) == 1);
    CHECK((*plugIn)->Release(plugIn) == 0);
}

// Through a handle of either table: their first four slots are the same.
static void checkQueries(void* handle, void* plugIn, void* service) {
    PlugIn* const table = *(PlugIn**)handle;
    const uint32_t before = table->AddRef(handle);
    void* found = NULL;
    CHECK(table->QueryInterface(handle, kPlugInInterface, &found) == 0 && found == plugIn);
    CHECK(table->QueryInterface(handle, kServiceInterface, &found) == 0 && found == service);
    CHECK(table->Release(handle) == before + 1 && table->Release(handle) == before);
    found = &found;
    for (int i = 0; i < 16; ++i) {
        CHECK((uint32_t)table->QueryInterface(handle, withChangedByte(kPlugInInterface, i), &found) == 0x80000004);
        CHECK((uint32_t)table->QueryInterface(handle, withChangedByte(kServiceInterface, i), &found) == 0x80000004);
    }
    CHECK((uint32_t)table->QueryInterface(handle, kBasicUnknown, &found) == 0x80000004);
    CHECK((uint32_t)table->QueryInterface(handle, kServiceType, &found) == 0x80000004);
    CHECK(found == &found);
    CHECK(table->Release(handle) == before - 1);
}

static void* value(const char* json) { return parseJSON((Text){strlen(json), json}).object; }

// Whether the property reads as the JSON text says, and is the caller's to release; a null text stands for null.
static bool reads(Service** service, const char* key, const char* json) {
    void* const name = value(key);
    void* const wanted = json == NULL ? NULL : value(json);
    void* const copied = (*service)->copyProperty(service, name);
    const bool isSo = equal(copied, wanted);
    release(copied);
    release(wanted);
    release(name);
    return isSo;
}

static bool takes(Service** service, const char* key) {
    void* const name = value(key);
    void* const one = value("1");
    const bool isTaken = (*service)->setProperty(service, name, one);
    release(one);
    release(name);
    return isTaken;
}

// Every operation answers without a device, in a life from the factory to the last release.
static void liveWithoutDevice(Factory* factory) {
    PlugIn** const plugIn = make(factory);
    Service** const service = serviceOf(plugIn);
    CHECK((*plugIn)->reserved != NULL && (*plugIn)->reserved == (*service)->reserved);
    checkQueries(plugIn, plugIn, service);
    checkQueries(service, plugIn, service);
    int32_t order = 7;
    CHECK((*plugIn)->Probe(plugIn, NULL, 0, &order) == 0 && order == 7);
    CHECK((uint32_t)(*plugIn)->Start(plugIn, NULL, 0) == 0xE00002BE);
    CHECK(!(*service)->open(service, 0));
    (*service)->setEventCallback(service, NULL, NULL, NULL);
    void* const queue = createQueue("plain host", 0).object;
    (*service)->unscheduleFromDispatchQueue(service, queue);
    (*service)->scheduleWithDispatchQueue(service, queue);
    CHECK(reads(service, "\"Version\"", "[19, 0, 0]") && !takes(service, "\"Version\""));
    CHECK(reads(service, "\"Pipeline.DebugInfo\"", "{\"ResetCount\": 0, \"DisjointImageCount\": 0}"));
    CHECK(takes(service, "\"Pipeline.Algs.HoldTimeoutMilliseconds\""));
    CHECK(reads(service, "\"Pipeline.Algs.HoldTimeoutMilliseconds\"", "1"));
    CHECK(reads(service, "\"FactoryResetHoldDuration\"", NULL) && reads(service, "\"Product\"", NULL));
    CHECK((*service)->copyProperty(service, NULL) == NULL && !(*service)->setProperty(service, NULL, NULL));
    CHECK((*service)->copyEvent(service, 11, NULL, 0) == NULL);
    CHECK((uint32_t)(*service)->setOutputEvent(service, NULL) == 0xE00002C7);
    (*service)->unscheduleFromDispatchQueue(service, queue);
    release(queue);
    (*service)->close(service, 0);
    CHECK((*plugIn)->Stop(plugIn) == 0);
    (*service)->Release(service);
    (*plugIn)->Release(plugIn);
}

static void countEvent(void* target, void* refcon, void* sender, void* event, uint32_t options) {
    CHECK(sender == refcon && event != NULL && options == 0);
    ++*(int*)target;
}

static void live(Factory* factory) {
    PlugIn** const plugIn = make(factory);
    Service** const service = serviceOf(plugIn);
    const uint32_t device = registerTestDevice();
    CHECK((*plugIn)->Probe(plugIn, NULL, device, &(int32_t){0}) == 0 && (*plugIn)->Start(plugIn, NULL, device) == 0);
    CHECK((*service)->open(service, 0));
    int events = 0;
    (*service)->setEventCallback(service, countEvent, &events, service);
    void* const queue = createQueue("plain host", 0).object;
    (*service)->scheduleWithDispatchQueue(service, queue);
    sendFirmwareReset();
    (*service)->unscheduleFromDispatchQueue(service, queue);
    drainQueue(queue);
    CHECK(events == 1);
    release(queue);
    (*service)->close(service, 0);
    CHECK((*plugIn)->Stop(plugIn) == 0);
    (*service)->Release(service);
    (*plugIn)->Release(plugIn);
}

// In a process of its own. The service's thread may still be on its last instructions when the module is closed, and
// when the process ends.
static void liveAndClose(const char* path) {
    const pid_t process = fork();
    CHECK(process >= 0);
    if (process == 0) {
        void* module = NULL;
        live(load(path, &module));
        dlclose(module);
        CHECK(dlopen(path, RTLD_NOW | RTLD_NOLOAD) != NULL);
        exit(0);
    }
    int status = 0;
    CHECK(waitpid(process, &status, 0) == process && status == 0);
}

int main(int count, char** arguments) {
    CHECK(count == 2);
    for (int i = 0; i < 30; ++i)
        liveAndClose(arguments[1]);
    void* module = NULL;
    Factory* const factory = load(arguments[1], &module);
    checkFactory(factory);
    liveWithoutDevice(factory);
}
