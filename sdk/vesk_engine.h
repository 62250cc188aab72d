/* The contract between the front end and a numerical engine: everything an engine author needs.
 *
 * An engine is a shared library with the six functions below. Each is given one callback and reads and writes
 * everything through it, keyword by keyword. A function returns when its work is done or when it has read a
 * CANCEL other than 0; a return value, if there is one, is ignored.
 *
 * The callback. `name` is a mode letter and a keyword in one NUL-terminated string: "GNUMSEG" reads the number
 * of segments, "PNUMSEG" writes it. "G" or "g" reads; any other letter writes. Keywords are upper case. `a1` to
 * `a5` are the addresses of the keyword's arguments in order, never their values; arguments after the keyword's
 * last one are ignored. An index is an argument like any other and is passed by address too. The engine counts
 * from 1.
 *
 *   INTEGER   address of an int32_t
 *   REAL      address of a float
 *   STRING    address of a NUL-terminated character buffer. The callback knows no buffer's size: a text that is
 *             read is written whole with its terminator. Names and descriptions have at most 255 bytes (256 with
 *             the terminator), file names (HYDROFILE, NPSFILE, FILENAME, PROJECTFILE, CSVOPFILENAME) at most 4,095
 *             (4,096 with it). A GET of a longer file name writes nothing and fails the job: CANCEL answers 1 from
 *             then on. Only the results of SPRINTF... have no limit. Start a buffer as an empty text: a read that
 *             finds nothing leaves it, and a log shows it, as it was.
 *   array     address of the first element of an array of float, owned by the engine. A log shows that element, so an
 *             array of none has one, too.
 *
 * Texts are bytes, UTF-8 by preference.
 *
 * Arrays that the engine registers (ALLTFDATA, ALLLOADDATA, ALLBCDATA, ALLFLOWDATA, ALLEXCHANGEDATA,
 * PRINTTIMEFUNC) are written at each PUT of DAYS and remain the engine's own. They must exist until the
 * function returns. The engine sets their initial values: an element that belongs to no series is never
 * written.
 *   ALLTFDATA        element ISC - 1; must reach the largest ISC number of the model, used or not
 *   ALLLOADDATA      element segment * NUMSYS + system - 1, segment from 0; NUMSEG * NUMSYS elements
 *   ALLBCDATA        the same
 *   ALLFLOWDATA      element function * 6 + field, both from 0; there are six flow fields
 *   ALLEXCHANGEDATA  element function * 6 + field, both from 0; there are two exchange fields
 *   PRINTTIMEFUNC    one element, the current print interval
 *
 * The results array of GRIDDATA is read by the front end at any time until DONE is put; put DONE before freeing it.
 *
 * The column labels of GRIDINIT are one block of slots, each of the width passed; a label shorter than its slot
 * ends with a NUL.
 *
 * An engine's function has to return. Ending its thread or the process ends the whole program, with one line on
 * standard error that names the engine.
 *
 * Calls may come from any thread of the engine's, but only one at a time. No exception crosses this boundary:
 * when the front end fails inside a call it notes the failure and answers CANCEL with 1 from then on.
 */
#ifndef VESK_ENGINE_H
#define VESK_ENGINE_H

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*vesk_data_callback)(const char* name, void* a1, void* a2, void* a3, void* a4, void* a5);

/* Runs the model. `library` is the engine library's name as the catalogue gives it for the chosen model. */
void execute_model(const char* library, vesk_data_callback data_callback);

/* Puts the engine's limits: MAXSEG, MAXTRANFUNC, MAXBREAK, MAXBOUND and MAXLOAD. */
void get_maximum_parameters(const char* library, vesk_data_callback data_callback);

/* Reads (flag 1) the file named by FILENAME into the data set, or writes (flag 0) the data set to it. */
void import_export(vesk_data_callback data_callback, int flag);

/* Reads the network file named by FILENAME into the data set. */
void import_network(vesk_data_callback data_callback);

/* Reads the restart file named by FILENAME into the data set. */
void load_restart_file(vesk_data_callback data_callback);

/* Builds the network from the hydrodynamic file named by HYDROFILE. */
void read_hyd_file(vesk_data_callback data_callback);

#ifdef __cplusplus
}
#endif

#endif
