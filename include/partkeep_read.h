/* The C interface of Partkeep Read, for hosts on Linux.
 *
 * All text is UTF-8 with a terminating NUL. The working folder and the file paths handed out are native paths;
 * server and folder texts are the part database's own, with backslashes between folders. A null text argument
 * counts as empty text, and a null output pointer is skipped.
 *
 * Texts handed out are the caller's: give each back to partkeep_read_free. Where a function leaves an output
 * untouched this says so; a caller therefore sets its pointers to NULL first.
 *
 * One operation at a time, on whatever thread: the object, and the two values that hold for the whole process, are
 * not guarded. A dialog runs on the thread that calls. If the process has an application of the toolkit's, that must
 * be the application's thread; else the component makes one for as long as the object lives, so destroy the object on
 * the thread that ran its dialog.
 *
 * Where no window can be shown, a dialog counts as cancelled with a line on standard error that tells why, and a
 * message goes to standard error and counts as answered. Nothing is ever written to standard output.
 */
#ifndef PARTKEEP_READ_H
#define PARTKEEP_READ_H

#include <stdint.h>

#if defined(__GNUC__)
#define PARTKEEP_READ_API __attribute__((visibility("default")))
#else
#define PARTKEEP_READ_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this header and of whatever is made with it. A later one of the same major number takes nothing
 * away. */
#define PARTKEEP_READ_VERSION_MAJOR 1
#define PARTKEEP_READ_VERSION_MINOR 0
#define PARTKEEP_READ_VERSION_PATCH 2
#define PARTKEEP_READ_VERSION                                                                                          \
    (PARTKEEP_READ_VERSION_MAJOR * 10000 + PARTKEEP_READ_VERSION_MINOR * 100 + PARTKEEP_READ_VERSION_PATCH)

/* The only two results of an operation. */
#define PARTKEEP_READ_OK 0
#define PARTKEEP_READ_FALSE 1

typedef struct partkeep_read partkeep_read;

/* The version of the library that was loaded, counted as PARTKEEP_READ_VERSION is. */
PARTKEEP_READ_API int32_t partkeep_read_version(void);

/* A new object without parts, or NULL when memory has run out. The caller destroys it. */
PARTKEEP_READ_API partkeep_read* partkeep_read_create(void);

/* NULL is allowed. The staged files stay on disk. Never while an operation of this object is under way. */
PARTKEEP_READ_API void partkeep_read_destroy(partkeep_read* object);

/* Gives a text back. NULL is allowed. */
PARTKEEP_READ_API void partkeep_read_free(char* text);

/* The root under which files are staged, for the whole process. End it with a separator: nothing adds one.
 * Use a folder whose absolute path holds no dot; with one, old copies of a part are not cleared away.
 * Always PARTKEEP_READ_OK. */
PARTKEEP_READ_API int32_t partkeep_read_set_working_folder(partkeep_read* object, const char* working_folder);

/* The language of all texts, for the whole process: 1 English, 2 Japanese, 3 simplified Chinese, any other value
 * the user's own among these, else English. Always PARTKEEP_READ_OK. */
PARTKEEP_READ_API int32_t partkeep_read_set_language_id(partkeep_read* object, int32_t language_id);

/* Runs the selection dialog for one part. OK: confirmed, and what was picked stands at the end of the list.
 * FALSE: cancelled, failed, or no install location found. */
PARTKEEP_READ_API int32_t partkeep_read_invoke(partkeep_read* object);

/* Runs the selection dialog; 1 allows several parts, any other value one. FALSE: no install location found. OK in
 * every other case, a cancelled dialog included: look at the number of parts. */
PARTKEEP_READ_API int32_t partkeep_read_invoke_multi_selection(partkeep_read* object,
                                                               int32_t multiple_selection_allowed);

/* The number of parts that this object received so far. Always OK. */
PARTKEEP_READ_API int32_t partkeep_read_number_of_parts_selected(partkeep_read* object, int32_t* number);

/* The file of the first part. FALSE when there is none; the output is then untouched. */
PARTKEEP_READ_API int32_t partkeep_read_get_file_path(partkeep_read* object, char** part_file_name);

/* The first part. Thickness is in the database's unit with its fraction, quantity is decimal digits as typed.
 * FALSE when there is none; the outputs are then untouched. */
PARTKEEP_READ_API int32_t partkeep_read_get_selected_part_info(partkeep_read* object, char** part_file_name,
                                                               char** part_name, char** part_comment,
                                                               char** material_type, double* thickness,
                                                               char** quantity);

/* Part `index`, from 0. Always OK; an index out of range gives empty texts and 0. machine_type is the machine
 * filter at the time of picking: 0 PART, 1 NCT, 2 LASER, 3 MARVEN. */
PARTKEEP_READ_API int32_t partkeep_read_get_part_info(partkeep_read* object, int32_t index, char** server_name,
                                                      char** folder_name, char** file_path_name, char** sy_file_name,
                                                      char** nc_file_name, char** part_name, char** part_comment,
                                                      char** material_type, char** machine_name, int32_t* machine_type,
                                                      double* thickness, char** quantity);

/* Reads a named part into the working folder without a dialog. OK also when no file came; file_path_name is then
 * empty. FALSE: not read, and all outputs are empty texts and 0.0. Thickness is the database's integer, in 1/10000.
 * data_type takes no part in the read. The list of parts does not change. */
PARTKEEP_READ_API int32_t partkeep_read_read_cad_data(partkeep_read* object, const char* server_name,
                                                      const char* folder_name, const char* part_name,
                                                      const char* data_type, char** file_path_name,
                                                      char** read_part_name, char** part_comment, char** material_type,
                                                      double* thickness, char** quantity);

#ifdef __cplusplus
}
#endif

#endif
