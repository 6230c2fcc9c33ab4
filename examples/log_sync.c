/* Nightly log sync: takes the journal entries the terminal has not handed out yet,
 * a page at a time, gives each page to the application and only then marks exactly
 * those entries as read. The application here appends them to a tab-separated file.
 *
 *   log_sync ADDRESS FILE            ADDRESS is IP[:PORT]
 *
 * Nothing is marked that the application has not taken, so a failure at any point
 * loses nothing: the next run takes the unmarked entries again. An entry can come
 * twice (taken, then the mark failed), so the application keys entries by log_id.
 */
#include "example.h"

#define PAGE 100        /* entries per read; at most KVN_TRANSACTION_LOG_ID_MAX, the ids one mark takes */
#define WRITE_FAILED 1  /* the application could not store a page (statuses are 0 or negative) */

/* The application's part: stores a page of entries, returns 0 once they are safe. */
static int deliver(FILE *out, const kvn_transaction_log *entries, unsigned count) {
    unsigned i;
    for (i = 0; i < count; ++i) {
        const kvn_transaction_log *e = &entries[i];
        /* Texts that fill their array carry no NUL: print at most the array. */
        fprintf(out, "%u\t%u\t%u\t%u\t%.*s\t%.*s\n", (unsigned)e->log_id, (unsigned)e->attr_t08,
                (unsigned)e->attr_t09, (unsigned)e->attr_t10, (int)sizeof e->text_t12, e->text_t12,
                (int)sizeof e->text_t13, e->text_t13);
    }
    /* A real application commits its database transaction (or fsyncs) here. */
    return fflush(out) == 0 && !ferror(out) ? 0 : -1;
}

int main(int argc, char **argv) {
    kvn_device_conn conn;
    char host[EXAMPLE_HOST_MAX];
    kvn_transaction_log_query *page = malloc(sizeof *page); /* 52 KiB */
    kvn_transaction_log_id_list ids;
    uint32_t unread = 0, taken = 0;
    FILE *out;
    int32_t rc;

    if (argc != 3 || parse_address(argv[1], host, &conn) != 0) {
        fprintf(stderr, "usage: log_sync IP[:PORT] FILE\n");
        return 2;
    }
    if (page == NULL || (out = fopen(argv[2], "a")) == NULL) {
        fprintf(stderr, "log_sync: cannot open %s\n", argv[2]);
        free(page);
        return 1;
    }

    rc = connect_terminal(&conn);
    if (rc == 0) rc = kvn_get_transaction_log_unread_count(&conn, &unread);
    if (rc == 0) printf("%u unread entries\n", (unsigned)unread);

    /* Entries recorded while the sync runs are left for the next run: the loop stops
     * once it has taken what was unread at the start, or at an empty page. */
    while (rc == 0 && taken < unread) {
        unsigned count, i;
        /* A read writes only the bytes each value has: clear the page, or a short text
         * would end in the rest of a longer one from the previous page. */
        memset(page, 0, sizeof *page);
        page->attr_t02 = PAGE; /* tag 2: most entries to answer */
        page->attr_t03 = 0;    /* tag 3: 0 oldest first */
        rc = kvn_get_unread_transaction_logs(&conn, page);
        if (rc != 0) break;
        count = page->log_count & 0xFFu; /* the low byte counts the entries of this read */
        if (count == 0) break;

        if (deliver(out, page->entries, count) != 0) {
            fprintf(stderr, "log_sync: cannot write %s; these %u entries stay unread\n", argv[2], count);
            rc = WRITE_FAILED;
            break;
        }
        ids.count = (uint8_t)count;
        for (i = 0; i < count; ++i) ids.log_ids[i] = page->entries[i].log_id;
        rc = kvn_mark_transaction_logs_as_read(&conn, &ids);
        if (rc != 0) {
            printf("entries %u to %u stored but not marked: the next run takes them again\n",
                   (unsigned)ids.log_ids[0], (unsigned)ids.log_ids[count - 1]);
            break;
        }
        taken += count;
        printf("entries %u to %u stored and marked as read (%u of %u)\n", (unsigned)ids.log_ids[0],
               (unsigned)ids.log_ids[count - 1], (unsigned)taken, (unsigned)unread);
    }
    if (rc < 0) printf("sync stopped: %s\n", status_text(rc));
    if (rc == 0) printf("sync done: %u entries\n", (unsigned)taken);

    kvn_close_device_conn(&conn);
    fclose(out);
    free(page);
    return rc == 0 ? 0 : 1;
}
