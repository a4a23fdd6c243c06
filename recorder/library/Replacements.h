// The recorder's functions that take the place of the platform's, by the library that has them.
#pragma once

#include <fcntl.h>
#include <pthread.h>
#include <quorvel.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <wlcsm.h>

#include <cstdio>

namespace quorvel::recorder::replacement {

// NOLINTBEGIN(readability-identifier-naming): called as the platform calls them.
#define PLATFORM_CALL(name) decltype(::name) name;
#define LIBRARY_CALL(name)
#include "recorder/format/PlatformCalls.def"

// Written out: C libraries disagree about which of theirs throw nothing, which is a part of the type.
int system(const char* command);
FILE* popen(const char* command, const char* mode);
int pclose(FILE* stream);
FILE* fopen(const char* path, const char* mode);
int fclose(FILE* stream);
char* fgets(char* text, int size, FILE* stream);
void rewind(FILE* stream);
int fprintf(FILE* stream, const char* format, ...);
size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream);
int fflush(FILE* stream);
int printf(const char* format, ...);
int puts(const char* text);
int socket(int domain, int type, int protocol);
int connect(int descriptor, const sockaddr* address, socklen_t length);
ssize_t read(int descriptor, void* buffer, size_t size);
int close(int descriptor);
unsigned sleep(unsigned seconds);
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument);
int pthread_cancel(pthread_t thread);
int sched_setscheduler(pid_t process, int policy, const sched_param* parameters);
// NOLINTEND(readability-identifier-naming)

}  // namespace quorvel::recorder::replacement
