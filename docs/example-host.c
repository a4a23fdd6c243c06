/* A host in small: loads the plug-in, reads and writes one parameter through its table, and ends it.
 *
 * A real host allocates a context for each object instance that it writes, keeps it, and walks the whole table once;
 * what the words of an entry are is said in wifi/QuorvelWiFiTable.h, which is installed with the development files. */
#include <dlfcn.h>
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

enum { WORDS_PER_ENTRY = 72, UNSIGNED = 3 };

typedef uint32_t Function(void);
typedef uint32_t Get(uint32_t instance, uint32_t* out);
typedef uint32_t InitContext(void* context);
typedef uint32_t Set(void* context, uint32_t instance, uint32_t value);
typedef uint32_t Apply(void* context, uint32_t instance, uint32_t always1);

/* The entry of a parameter: path, name, type, access, 0, context size, and from there on functions. */
static const uintptr_t* find(void* plugin, const char* path, const char* name) {
    const uint32_t* info = dlsym(plugin, "gQuorvelWiFiDataModelTableInfo");
    const uintptr_t* entry = dlsym(plugin, "gQuorvelWiFiDataModelTable");
    for (uint32_t left = info[3]; left > 0; --left, entry += WORDS_PER_ENTRY) {
        if (strcmp((const char*)entry[0], path) == 0 && strcmp((const char*)entry[1], name) == 0) return entry;
    }
    return NULL;
}

int main(int argc, char** argv) {
    void* plugin = dlopen(argc > 1 ? argv[1] : "/usr/lib/quorvel/plugins/libquorvel_wifi.so", RTLD_NOW);
    if (plugin == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    Function* init = (Function*)dlsym(plugin, "WiFiInit");
    Function* end = (Function*)dlsym(plugin, "WiFiUnInit");
    uint32_t result = init();
    if (result != 0) fprintf(stderr, "WiFiInit ended with %" PRIu32 "; the log says why\n", result);

    const uintptr_t* channel = find(plugin, "WiFi.Radio.{i}", "Channel");
    if (channel == NULL) return 1;
    const unsigned slot = 2 * UNSIGNED + 1; /* of unsigned numbers of objects with one instance number */
    Get* get = (Get*)channel[6 + slot];
    Set* set = (Set*)channel[39 + slot];
    InitContext* begin = (InitContext*)channel[36];
    Apply* apply = (Apply*)channel[38];

    uint32_t value = 0;
    result = get(2, &value);
    printf("Device.WiFi.Radio.2.Channel is %" PRIu32 " (result %" PRIu32 ")\n", value, result);

    static uint32_t context[16384 / sizeof(uint32_t)]; /* channel[5] bytes are needed */
    result = begin(context);
    if (result == 0) result = set(context, 2, 44); /* staged: nothing has happened yet */
    if (result == 0) result = apply(context, 2, 1);
    printf("applying 44 gives %" PRIu32 "\n", result);
    result = get(2, &value);
    printf("Device.WiFi.Radio.2.Channel is %" PRIu32 " (result %" PRIu32 ")\n", value, result);
    return end() == 0 ? 0 : 1;
}
