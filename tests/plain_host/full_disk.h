#pragma once

/* From now on every write of this process, its libraries' too, finds no room; but for its standard output and errors.
 */
void fillDisk(void);
