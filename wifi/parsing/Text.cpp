#include "wifi/parsing/Text.h"

namespace quorvel {

void copyText(char* to, size_t size, const char* from) {
    if (size == 0) return;
    const size_t length = strnlen(from, size - 1);
    memcpy(to, from, length);
    to[length] = '\0';
}

void copyFieldText(char* buf, uint32_t len, const char* field, size_t capacity) {
    const size_t length = strnlen(field, capacity < len ? capacity : len);
    memcpy(buf, field, length);
    if (length < len) buf[length] = '\0';
}

}  // namespace quorvel
