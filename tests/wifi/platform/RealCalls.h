#pragma once

#include <pthread.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <time.h>

#include <cstddef>
#include <cstdio>

// The C library's own calls behind the linker's --wrap.
extern "C" {
int __real_system(const char* command);
std::FILE* __real_popen(const char* command, const char* mode);
int __real_pclose(std::FILE* stream);
std::FILE* __real_fopen(const char* path, const char* mode);
int __real_fclose(std::FILE* stream);
unsigned int __real_sleep(unsigned int seconds);
int __real_usleep(useconds_t microseconds);
int __real_nanosleep(const struct timespec* duration, struct timespec* rest);
int __real_sched_setscheduler(pid_t process, int policy, const struct sched_param* parameters);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument);
int __real_pthread_cancel(pthread_t thread);
int __real_socket(int family, int type, int protocol);
int __real_connect(int descriptor, const struct sockaddr* address, socklen_t length);
ssize_t __real_read(int descriptor, void* buffer, std::size_t size);
ssize_t __real_recv(int descriptor, void* buffer, std::size_t size, int flags);
int __real_close(int descriptor);
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* memory, std::size_t size);
void __real_free(void* memory);
}
