// measure INPUT COMMAND...: runs the command once, with the file INPUT on its standard input, reads its standard output
// to the end, and prints: wall-clock microseconds, processor microseconds, the largest process's peak memory in KiB,
// and how many bytes came out. Exits with 1 when the command fails.
//
// Small itself: a process's peak memory counts from that of the process which started it.

#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

extern char** environ;

static long long microseconds(struct timeval time) { return time.tv_sec * 1000000LL + time.tv_usec; }

static long long now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * 1000000LL + time.tv_nsec / 1000;
}

static pid_t start(char** command, const char* input, const int output[2]) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, input, O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&files, output[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&files, output[0]);
  posix_spawn_file_actions_addclose(&files, output[1]);
  pid_t process = -1;
  const int error = posix_spawnp(&process, command[0], &files, NULL, command, environ);
  posix_spawn_file_actions_destroy(&files);
  return error == 0 ? process : -1;
}

static long long drain(int descriptor) {
  static char buffer[65536];
  long long total = 0;
  for (ssize_t count; (count = read(descriptor, buffer, sizeof buffer)) > 0;) total += count;
  return total;
}

int main(int count, char** arguments) {
  int output[2];
  if (count < 3 || pipe(output) != 0) return 2;
  const long long begin = now();
  const pid_t process = start(arguments + 2, arguments[1], output);
  close(output[1]);
  if (process < 0) return 2;
  const long long bytes = drain(output[0]);
  int status = 0;
  struct rusage usage;
  if (wait4(process, &status, 0, &usage) != process) return 2;
  const long long end = now();
  printf("%lld %lld %ld %lld\n", end - begin, microseconds(usage.ru_utime) + microseconds(usage.ru_stime),
         usage.ru_maxrss, bytes);
  return status == 0 ? 0 : 1;
}
