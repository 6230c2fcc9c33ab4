/* Enrols a finger for a user at the terminal's sensor (the terminal creates the user
 * if it does not know it yet), then reads the user back.
 *
 *   enroll_user ADDRESS USER_ID [FINGER]     ADDRESS is IP[:PORT]; FINGER 0 to 9, default 1
 */
#include "example.h"

int main(int argc, char **argv) {
    kvn_device_conn conn;
    char host[EXAMPLE_HOST_MAX];
    kvn_enrollment_request enrol;
    kvn_user_record user;
    int32_t rc;

    memset(&enrol, 0, sizeof enrol);
    if (argc < 3 || parse_address(argv[1], host, &conn) != 0 || strlen(argv[2]) >= sizeof enrol.user_id) {
        fprintf(stderr, "usage: enroll_user IP[:PORT] USER_ID [FINGER]\n");
        return 2;
    }
    strcpy(enrol.user_id, argv[2]);
    enrol.attr_t09 = (uint8_t)(argc > 3 ? atoi(argv[3]) : 1); /* tag 9: the finger */

    rc = connect_terminal(&conn);
    if (rc == 0) {
        printf("enrolling finger %u of %s: place the finger on the sensor\n", (unsigned)enrol.attr_t09, enrol.user_id);
        rc = kvn_enrollment(&conn, &enrol);
        printf("enrolment: %s\n", status_text(rc));
    }
    if (rc == 0) {
        memset(&user, 0, sizeof user);
        strcpy(user.user_id, enrol.user_id);
        rc = kvn_get_user_record(&conn, &user);
        if (rc == 0) printf("%s now has %d template(s)\n", user.user_id, (int)user.template_count);
        else printf("reading %s back: %s\n", enrol.user_id, status_text(rc));
    }
    kvn_close_device_conn(&conn);
    return rc == 0 ? 0 : 1;
}
