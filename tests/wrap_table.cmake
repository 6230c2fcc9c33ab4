# Wraps the command table (a data file transcribed by hand) as a string literal.
file(READ ${TABLE} table)
file(WRITE ${TABLE_OUT}.tmp "R\"kvntable(${table})kvntable\"\n")
file(COPY_FILE ${TABLE_OUT}.tmp ${TABLE_OUT} ONLY_IF_DIFFERENT)
