/* A stand-in terminal on the Linux side for the Windows tests that run under Wine.
 *
 *   wine-terminal [--pidfile FILE] [--tcp-file FILE] [--idle-exit SECONDS]
 *                 [--sim PROGRAM --sim-file FILE --dosdevices DIR] LINK...
 *
 * Serial: for every LINK it creates a pseudo-terminal pair and makes LINK a symbolic
 * link to the slave side (for example <prefix>/dosdevices/com5 -> /dev/pts/3, which
 * Wine opens for \\.\COM5). TCP: with --tcp-file it also listens on an ephemeral
 * loopback port and writes "127.0.0.1 PORT" to FILE. Being another process, it lets
 * a Windows test talk TCP without starting Windows Sockets for a peer of its own.
 *
 * Simulator: with --sim PROGRAM --sim-file FILE it also listens on a second loopback
 * port (written to FILE as "127.0.0.1 PORT") and starts a fresh simulated terminal
 * (PROGRAM, the Linux kvn-sim) for every connection there. The client sends one line
 * of extra kvn-sim options (often empty) and reads one line back: "ok 127.0.0.1:PORT",
 * or with --serial among the options "ok COMn" (the simulator's pseudo-terminal,
 * linked as COMn in the directory given by --dosdevices), or "error TEXT". The
 * simulator runs until the client closes that connection.
 *
 * It then goes to the background and answers every request frame that arrives:
 *
 *   command 1  line report: the current line settings of the pty as the payload:
 *              u32 speed in bit/s, u8 data bits, u8 parity (0 none, 1 odd, 2 even),
 *              u8 stop bits, u8 flags (bit 0: no canonical input, echo or signals;
 *              bit 1: no software flow control; bit 2: no output processing).
 *              Over TCP the payload is empty and the status is -9.
 *   command 2  echo: the request payload comes back, in three pieces 40 ms apart
 *   command 3  late echo: the same, after 1.5 s of silence
 *   other      an empty payload with status -9
 *
 * A request whose CRC does not match is answered with an empty payload and status -6.
 * Each pty starts out as 9600 baud, 7 data bits, even parity, 2 stop bits, so that a
 * line report shows what the program on the other side set. The helper keeps a slave
 * descriptor of its own open, so the master never sees a hang-up between two opens of
 * the port. It exits on SIGTERM/SIGINT, or after --idle-exit seconds without traffic
 * (default 900), removing its links; the parent returns once everything is in place.
 */
#define _GNU_SOURCE
#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

enum { MAX_LINKS = 4, MAX_STREAMS = 16, MAX_FRAME = 70000, MAX_OUT = 32, MAX_SIMS = 8, FIRST_SIM_COM = 20 };

struct chunk {
    uint8_t *data;
    size_t size;
    int64_t due_ms; /* not before this time */
};

/* One byte stream: a pty master (slave >= 0) or an accepted TCP connection. */
struct stream {
    int fd, slave;
    uint8_t in[MAX_FRAME];
    size_t in_len;
    struct chunk out[MAX_OUT];
    size_t out_count;
};

/* One simulator started for a client of the launcher port. */
struct sim {
    int control;  /* the client's connection; -1: free slot */
    pid_t pid;    /* 0: not started yet */
    int output;   /* the simulator's standard output, drained */
    char line[512];
    size_t line_len;
    char link[600]; /* COMn link for a serial simulator, or "" */
};

static struct sim sims[MAX_SIMS];
static const char *sim_program, *dosdevices;
static const char *links[MAX_LINKS];
static size_t link_count;
static struct stream streams[MAX_STREAMS];
static volatile sig_atomic_t stop_requested;

static void on_signal(int sig) {
    (void)sig;
    stop_requested = 1;
}

static int64_t now_ms(void) {
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (int64_t)ts.tv_sec * 1000 + ts.tv_nsec / 1000000;
}

static uint32_t crc32_update(uint32_t crc, const uint8_t *p, size_t n) {
    crc = ~crc;
    while (n--) {
        crc ^= *p++;
        for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

static uint32_t le32(const uint8_t *p) {
    return (uint32_t)p[0] | (uint32_t)p[1] << 8 | (uint32_t)p[2] << 16 | (uint32_t)p[3] << 24;
}

static void put32(uint8_t *p, uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = (uint8_t)(v >> (8 * i));
}

static uint32_t speed_of(speed_t s) {
    static const struct { speed_t code; uint32_t bps; } table[] = {
        {B1200, 1200},     {B2400, 2400},     {B4800, 4800},     {B9600, 9600},     {B19200, 19200},
        {B38400, 38400},   {B57600, 57600},   {B115200, 115200}, {B230400, 230400}, {B460800, 460800},
        {B921600, 921600},
    };
    for (size_t i = 0; i < sizeof table / sizeof table[0]; ++i)
        if (table[i].code == s) return table[i].bps;
    return 0;
}

static void drop_output(struct stream *st) {
    for (size_t i = 0; i < st->out_count; ++i) free(st->out[i].data);
    st->out_count = 0;
}

static void close_stream(struct stream *st) {
    drop_output(st);
    close(st->fd);
    st->fd = -1;
    st->in_len = 0;
}

/* Queues `size` bytes for the stream, in one piece or in three pieces 40 ms apart. */
static void queue(struct stream *st, const uint8_t *data, size_t size, int64_t first_due, int pieces) {
    size_t cut[4] = {0, size, size, size};
    if (pieces == 3 && size > 12) {
        cut[1] = 10;
        cut[2] = 10 + (size - 10) / 2;
    }
    for (int i = 0; i < 3 && st->out_count < MAX_OUT; ++i) {
        const size_t n = cut[i + 1] - cut[i];
        if (n == 0) continue;
        struct chunk *c = &st->out[st->out_count++];
        c->data = malloc(n);
        if (c->data == NULL) abort();
        memcpy(c->data, data + cut[i], n);
        c->size = n;
        c->due_ms = first_due + 40 * i;
    }
}

static void answer(struct stream *st, int32_t status, const uint8_t *payload, uint32_t n, int64_t due, int pieces) {
    static uint8_t frame[MAX_FRAME + 32];
    put32(frame + 0, 0xAABBCCDDu);
    put32(frame + 4, 0x01010101u);
    put32(frame + 8, 0x00020002u);
    put32(frame + 12, 0);
    put32(frame + 16, (uint32_t)status);
    put32(frame + 20, 0);
    put32(frame + 24, n);
    if (n) memcpy(frame + 28, payload, n);
    put32(frame + 28 + n, crc32_update(0, frame + 4, 24 + n));
    queue(st, frame, 32 + n, due, pieces);
}

static void line_report(struct stream *st) {
    struct termios t;
    uint8_t r[8] = {0};
    if (st->slave < 0 || tcgetattr(st->slave, &t) != 0) {
        answer(st, -9, NULL, 0, now_ms(), 1);
        return;
    }
    put32(r, speed_of(cfgetospeed(&t)));
    switch (t.c_cflag & CSIZE) {
        case CS5: r[4] = 5; break;
        case CS6: r[4] = 6; break;
        case CS7: r[4] = 7; break;
        default: r[4] = 8; break;
    }
    r[5] = (t.c_cflag & PARENB) ? ((t.c_cflag & PARODD) ? 1 : 2) : 0;
    r[6] = (t.c_cflag & CSTOPB) ? 2 : 1;
    r[7] = (uint8_t)(((t.c_lflag & (ICANON | ECHO | ISIG)) == 0 ? 1 : 0) | ((t.c_iflag & (IXON | IXOFF)) == 0 ? 2 : 0) |
                     ((t.c_oflag & OPOST) == 0 ? 4 : 0));
    answer(st, 0, r, sizeof r, now_ms(), 1);
}

/* Handles every whole request frame in the input buffer; drops bytes before a sync word. */
static void serve(struct stream *st) {
    for (;;) {
        size_t skip = 0;
        while (skip + 4 <= st->in_len && le32(st->in + skip) != 0xAABBCCDDu) ++skip;
        if (skip) {
            memmove(st->in, st->in + skip, st->in_len - skip);
            st->in_len -= skip;
        }
        if (st->in_len < 24) return;
        const uint32_t n = le32(st->in + 20);
        if (n > MAX_FRAME - 28) { /* not a frame this helper can hold: drop its sync word */
            memmove(st->in, st->in + 4, st->in_len - 4);
            st->in_len -= 4;
            continue;
        }
        if (st->in_len < 28 + (size_t)n) return;
        /* Requests and answers alternate, so with nothing left to send, whatever still
           sits unread on the slave side belongs to an earlier exchange (or an earlier
           opening of the port): it is discarded, as no terminal would send it first. */
        if (st->slave >= 0 && st->out_count == 0) tcflush(st->slave, TCIFLUSH);
        const uint8_t *payload = st->in + 24;
        const uint32_t command = le32(st->in + 16);
        if (crc32_update(0, st->in + 4, 20 + n) != le32(st->in + 24 + n)) {
            answer(st, -6, NULL, 0, now_ms(), 1);
        } else if (command == 1) {
            line_report(st);
        } else if (command == 2 || command == 3) {
            answer(st, 0, payload, n, now_ms() + (command == 3 ? 1500 : 0), 3);
        } else {
            answer(st, -9, NULL, 0, now_ms(), 1);
        }
        memmove(st->in, st->in + 28 + n, st->in_len - 28 - n);
        st->in_len -= 28 + n;
    }
}

/* Writes what is due; returns the wait in ms until the next chunk is due (-1: none). */
static int flush_due(struct stream *st) {
    while (st->out_count > 0) {
        struct chunk *c = &st->out[0];
        const int64_t wait = c->due_ms - now_ms();
        if (wait > 0) return (int)wait;
        const ssize_t w = st->slave >= 0 ? write(st->fd, c->data, c->size)
                                         : send(st->fd, c->data, c->size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (w < 0) {
            if (errno == EAGAIN || errno == EINTR) return 5; /* queue full: try again shortly */
            if (st->slave < 0) close_stream(st);             /* the client went away */
            return -1;
        }
        if ((size_t)w < c->size) {
            memmove(c->data, c->data + w, c->size - (size_t)w);
            c->size -= (size_t)w;
            return 5;
        }
        free(c->data);
        memmove(&st->out[0], &st->out[1], (st->out_count - 1) * sizeof st->out[0]);
        --st->out_count;
    }
    return -1;
}

static int open_pty(struct stream *st, const char *link) {
    st->fd = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (st->fd < 0 || grantpt(st->fd) != 0 || unlockpt(st->fd) != 0) return -1;
    const char *name = ptsname(st->fd);
    if (name == NULL) return -1;
    st->slave = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (st->slave < 0) return -1;
    struct termios t;
    if (tcgetattr(st->slave, &t) != 0) return -1;
    cfmakeraw(&t);
    t.c_cflag = (t.c_cflag & ~(tcflag_t)CSIZE) | CS7 | PARENB | CSTOPB;
    cfsetispeed(&t, B9600);
    cfsetospeed(&t, B9600);
    if (tcsetattr(st->slave, TCSANOW, &t) != 0) return -1;
    unlink(link);
    if (symlink(name, link) != 0) {
        fprintf(stderr, "wine-terminal: cannot link %s -> %s: %s\n", link, name, strerror(errno));
        return -1;
    }
    return 0;
}

static int open_listener(const char *tcp_file) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) return -1;
    struct sockaddr_in addr;
    memset(&addr, 0, sizeof addr);
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof addr;
    if (bind(fd, (struct sockaddr *)&addr, sizeof addr) != 0 || listen(fd, 16) != 0 ||
        getsockname(fd, (struct sockaddr *)&addr, &len) != 0) {
        close(fd);
        return -1;
    }
    FILE *f = fopen(tcp_file, "w");
    if (f == NULL) {
        close(fd);
        return -1;
    }
    fprintf(f, "127.0.0.1 %u\n", (unsigned)ntohs(addr.sin_port));
    fclose(f);
    return fd;
}

static void end_sim(struct sim *sm) {
    if (sm->pid > 0) {
        kill(sm->pid, SIGTERM);
        for (int i = 0; i < 200 && waitpid(sm->pid, NULL, WNOHANG) == 0; ++i) usleep(10000);
        if (waitpid(sm->pid, NULL, WNOHANG) == 0) {
            kill(sm->pid, SIGKILL);
            waitpid(sm->pid, NULL, 0);
        }
    }
    if (sm->link[0] != '\0') unlink(sm->link);
    if (sm->output >= 0) close(sm->output);
    if (sm->control >= 0) close(sm->control);
    memset(sm, 0, sizeof *sm);
    sm->control = sm->output = -1;
}

static void reply(struct sim *sm, const char *text) {
    const size_t n = strlen(text);
    if (send(sm->control, text, n, MSG_NOSIGNAL) != (ssize_t)n) {
        /* the client is gone; the next read of its connection ends the simulator */
    }
}

/* Starts the simulator with the options in sm->line and answers the client. */
static void launch(struct sim *sm, size_t slot) {
    char *argv[40];
    int argc = 0;
    argv[argc++] = (char *)sim_program;
    argv[argc++] = "--listen";
    argv[argc++] = "127.0.0.1:0";
    int serial = 0;
    for (char *tok = strtok(sm->line, " \t\r"); tok != NULL && argc < 39; tok = strtok(NULL, " \t\r")) {
        if (strcmp(tok, "--serial") == 0) serial = 1;
        argv[argc++] = tok;
    }
    argv[argc] = NULL;
    if (serial && dosdevices == NULL) {
        reply(sm, "error no --dosdevices for a serial simulator\n");
        return;
    }
    int out[2];
    if (pipe2(out, O_CLOEXEC) != 0) {
        reply(sm, "error pipe\n");
        return;
    }
    const pid_t pid = fork();
    if (pid < 0) {
        close(out[0]);
        close(out[1]);
        reply(sm, "error fork\n");
        return;
    }
    if (pid == 0) {
        dup2(out[1], 1);
        dup2(out[1], 2);
        close(out[0]);
        close(out[1]);
        execv(sim_program, argv);
        fprintf(stderr, "cannot start %s: %s\n", sim_program, strerror(errno));
        _exit(127);
    }
    close(out[1]);
    sm->pid = pid;
    sm->output = out[0];

    /* The first line it prints is its address (or pseudo-terminal), or what went wrong. */
    char first[256];
    size_t len = 0;
    const int64_t deadline = now_ms() + 10000;
    while (len < sizeof first - 1 && (len == 0 || first[len - 1] != '\n')) {
        struct pollfd p = {sm->output, POLLIN, 0};
        const int64_t left = deadline - now_ms();
        if (left <= 0 || poll(&p, 1, (int)left) <= 0) break;
        const ssize_t r = read(sm->output, first + len, sizeof first - 1 - len);
        if (r <= 0) break;
        len += (size_t)r;
    }
    first[len] = '\0';
    first[strcspn(first, "\r\n")] = '\0';
    fcntl(sm->output, F_SETFL, O_NONBLOCK);

    char answer[700];
    if (!serial && strncmp(first, "127.0.0.1:", 10) == 0) {
        snprintf(answer, sizeof answer, "ok %s\n", first);
    } else if (serial && first[0] == '/') {
        const unsigned com = FIRST_SIM_COM + (unsigned)slot;
        snprintf(sm->link, sizeof sm->link, "%s/com%u", dosdevices, com);
        unlink(sm->link);
        if (symlink(first, sm->link) == 0) {
            snprintf(answer, sizeof answer, "ok COM%u\n", com);
        } else {
            sm->link[0] = '\0';
            snprintf(answer, sizeof answer, "error cannot link COM%u: %s\n", com, strerror(errno));
        }
    } else {
        snprintf(answer, sizeof answer, "error %s\n", len ? first : "the simulator printed nothing");
    }
    reply(sm, answer);
}

/* Reads from a launcher client: its option line, then only the end of the connection. */
static void serve_launch(struct sim *sm, size_t slot) {
    char buf[256];
    const ssize_t r = read(sm->control, buf, sizeof buf);
    if (r == 0 || (r < 0 && errno != EAGAIN && errno != EINTR)) {
        end_sim(sm);
        return;
    }
    if (r < 0 || sm->pid != 0) return;
    for (ssize_t i = 0; i < r; ++i) {
        if (buf[i] == '\n') {
            sm->line[sm->line_len] = '\0';
            launch(sm, slot);
            return;
        }
        if (sm->line_len < sizeof sm->line - 1) sm->line[sm->line_len++] = buf[i];
    }
}

static void remove_links(void) {
    for (size_t i = 0; i < link_count; ++i) unlink(links[i]);
}

int main(int argc, char **argv) {
    const char *pidfile = NULL, *tcp_file = NULL, *sim_file = NULL;
    int idle_exit_s = 900;
    int i = 1;
    for (; i < argc; ++i) {
        if (strcmp(argv[i], "--pidfile") == 0 && i + 1 < argc) {
            pidfile = argv[++i];
        } else if (strcmp(argv[i], "--tcp-file") == 0 && i + 1 < argc) {
            tcp_file = argv[++i];
        } else if (strcmp(argv[i], "--sim") == 0 && i + 1 < argc) {
            sim_program = argv[++i];
        } else if (strcmp(argv[i], "--sim-file") == 0 && i + 1 < argc) {
            sim_file = argv[++i];
        } else if (strcmp(argv[i], "--dosdevices") == 0 && i + 1 < argc) {
            dosdevices = argv[++i];
        } else if (strcmp(argv[i], "--idle-exit") == 0 && i + 1 < argc) {
            idle_exit_s = atoi(argv[++i]);
        } else {
            break;
        }
    }
    if (argc - i > MAX_LINKS || (i >= argc && tcp_file == NULL) || (sim_program == NULL) != (sim_file == NULL)) {
        fprintf(stderr,
                "usage: wine-terminal [--pidfile FILE] [--tcp-file FILE] [--idle-exit SECONDS]\n"
                "                     [--sim PROGRAM --sim-file FILE --dosdevices DIR] LINK... (at most %d)\n",
                MAX_LINKS);
        return 2;
    }
    for (; i < argc; ++i) links[link_count++] = argv[i];
    for (size_t s = 0; s < MAX_STREAMS; ++s) streams[s].fd = streams[s].slave = -1;
    for (size_t m = 0; m < MAX_SIMS; ++m) sims[m].control = sims[m].output = -1;

    /* The parent returns once everything is in place (or setting up failed). */
    int ready[2];
    if (pipe(ready) != 0) return 1;
    const pid_t child = fork();
    if (child < 0) return 1;
    if (child > 0) {
        close(ready[1]);
        char ok = 0;
        const ssize_t r = read(ready[0], &ok, 1);
        return r == 1 && ok == 1 ? 0 : 1;
    }
    close(ready[0]);
    setsid();
    for (size_t p = 0; p < link_count; ++p) {
        if (open_pty(&streams[p], links[p]) != 0) {
            remove_links();
            return 1;
        }
    }
    const int listener = tcp_file != NULL ? open_listener(tcp_file) : -1;
    const int sim_listener = sim_file != NULL ? open_listener(sim_file) : -1;
    if ((tcp_file != NULL && listener < 0) || (sim_file != NULL && sim_listener < 0)) {
        fprintf(stderr, "wine-terminal: cannot listen on loopback: %s\n", strerror(errno));
        remove_links();
        return 1;
    }
    if (pidfile != NULL) {
        FILE *f = fopen(pidfile, "w");
        if (f == NULL) {
            remove_links();
            return 1;
        }
        fprintf(f, "%ld\n", (long)getpid());
        fclose(f);
    }
    struct sigaction sa;
    memset(&sa, 0, sizeof sa);
    sa.sa_handler = on_signal;
    sigaction(SIGTERM, &sa, NULL);
    sigaction(SIGINT, &sa, NULL);
    signal(SIGHUP, SIG_IGN);
    signal(SIGPIPE, SIG_IGN);
    const int devnull = open("/dev/null", O_RDWR);
    if (devnull >= 0) {
        dup2(devnull, 0);
        dup2(devnull, 1);
        dup2(devnull, 2);
    }
    const char ok = 1;
    if (write(ready[1], &ok, 1) != 1) return 1;
    close(ready[1]);

    int64_t last_activity = now_ms();
    while (!stop_requested) {
        enum { LISTENER = MAX_STREAMS, SIM_LISTENER, SIM_CONTROL = 1000, SIM_OUTPUT = 2000 };
        struct pollfd fds[MAX_STREAMS + 2 + 2 * MAX_SIMS];
        size_t owner[MAX_STREAMS + 2 + 2 * MAX_SIMS];
        nfds_t count = 0;
        int timeout = 1000;
        for (size_t s = 0; s < MAX_STREAMS; ++s) {
            if (streams[s].fd < 0) continue;
            const int wait = flush_due(&streams[s]);
            if (wait >= 0 && wait < timeout) timeout = wait;
            if (streams[s].fd < 0) continue;
            fds[count].fd = streams[s].fd;
            fds[count].events = POLLIN;
            fds[count].revents = 0;
            owner[count++] = s;
        }
        if (listener >= 0) {
            fds[count].fd = listener;
            fds[count].events = POLLIN;
            fds[count].revents = 0;
            owner[count++] = LISTENER;
        }
        if (sim_listener >= 0) {
            fds[count].fd = sim_listener;
            fds[count].events = POLLIN;
            fds[count].revents = 0;
            owner[count++] = SIM_LISTENER;
        }
        for (size_t m = 0; m < MAX_SIMS; ++m) {
            if (sims[m].control < 0) continue;
            fds[count].fd = sims[m].control;
            fds[count].events = POLLIN;
            fds[count].revents = 0;
            owner[count++] = SIM_CONTROL + m;
            if (sims[m].output >= 0) {
                fds[count].fd = sims[m].output;
                fds[count].events = POLLIN;
                fds[count].revents = 0;
                owner[count++] = SIM_OUTPUT + m;
            }
        }
        const int r = poll(fds, count, timeout);
        if (r < 0 && errno != EINTR) break;
        for (nfds_t k = 0; r > 0 && k < count; ++k) {
            if (!(fds[k].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            if (owner[k] >= SIM_OUTPUT) { /* whatever a simulator prints after its address is dropped */
                struct sim *sm = &sims[owner[k] - SIM_OUTPUT];
                char sink[4096];
                if (sm->output >= 0 && read(sm->output, sink, sizeof sink) == 0) {
                    close(sm->output);
                    sm->output = -1;
                }
                continue;
            }
            last_activity = now_ms();
            if (owner[k] >= SIM_CONTROL) {
                if (sims[owner[k] - SIM_CONTROL].control >= 0)
                    serve_launch(&sims[owner[k] - SIM_CONTROL], owner[k] - SIM_CONTROL);
                continue;
            }
            if (owner[k] == SIM_LISTENER) {
                const int c = accept4(sim_listener, NULL, NULL, SOCK_NONBLOCK | SOCK_CLOEXEC);
                if (c < 0) continue;
                size_t m = 0;
                while (m < MAX_SIMS && sims[m].control >= 0) ++m;
                if (m == MAX_SIMS) {
                    close(c);
                    continue;
                }
                sims[m].control = c;
                continue;
            }
            if (owner[k] == LISTENER) {
                const int c = accept4(listener, NULL, NULL, SOCK_NONBLOCK | SOCK_CLOEXEC);
                if (c < 0) continue;
                size_t s = link_count;
                while (s < MAX_STREAMS && streams[s].fd >= 0) ++s;
                if (s == MAX_STREAMS) {
                    close(c);
                    continue;
                }
                const int one = 1;
                setsockopt(c, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
                streams[s].fd = c;
                streams[s].slave = -1;
                streams[s].in_len = 0;
                continue;
            }
            struct stream *st = &streams[owner[k]];
            const ssize_t got = read(st->fd, st->in + st->in_len, sizeof st->in - st->in_len);
            if (got > 0) {
                st->in_len += (size_t)got;
                serve(st);
                if (st->in_len == sizeof st->in) st->in_len = 0; /* garbage without a frame end */
            } else if (st->slave < 0 && (got == 0 || (errno != EAGAIN && errno != EINTR))) {
                close_stream(st); /* the TCP client closed */
            }
        }
        if (idle_exit_s > 0 && now_ms() - last_activity > (int64_t)idle_exit_s * 1000) break;
    }
    for (size_t m = 0; m < MAX_SIMS; ++m)
        if (sims[m].control >= 0) end_sim(&sims[m]);
    remove_links();
    if (pidfile != NULL) unlink(pidfile);
    if (tcp_file != NULL) unlink(tcp_file);
    if (sim_file != NULL) unlink(sim_file);
    return 0;
}
