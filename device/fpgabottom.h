#pragma once

#include "records.h"

/// The board's FPGA as a window of registers on "/dev/DM365-FPGA": each operation is a positioned
/// read or write of a few bytes.
///
/// A *transfer result* is the byte count that the system call returned, modulo 256 (38400 bytes
/// give 0, 1044 give 20), or 255 when the transfer was refused or failed. A failed system call is
/// reported on standard error by "read data failed" or "write fpga failed" with its reason.
/// Nothing is retried.
///
/// A value whose read fails is 0. A switch reads its register, changes its own bits and writes
/// the byte back; if that read fails the other bits of the byte are written as 0, and the line
/// "read data failed" is the only notice.
///
/// Thread-bound: each transfer is two system calls on one descriptor, and nothing is locked.
class [[gnu::visibility("default")]] FPGABottom {
public:
    /// Opens the device for reading and writing. When that fails "open fpga device failed" goes to
    /// standard error, and every later operation is refused.
    FPGABottom();
    /// Closes the device.
    ~FPGABottom();
    FPGABottom(const FPGABottom&) = delete;
    FPGABottom& operator=(const FPGABottom&) = delete;

    /// Reads `len` bytes at `addr` into `buf`, the caller's. Refused when `buf` is null, `len` is
    /// not above 0 or the device is not open. Returns the transfer result.
    unsigned char readData(unsigned int addr, void* buf, int len);
    /// Writes `len` bytes at `addr`; a length of 0 is carried out. Refused when `buf` is null,
    /// `len` is negative or the device is not open. Returns the transfer result.
    unsigned char writeData(unsigned int addr, const void* buf, int len);

    /// @name State of the board
    /// @{

    /// Puts the FPGA's version text into `buf`: 15 bytes, not terminated. Returns the transfer
    /// result.
    unsigned char fpga_get_version(char* buf);
    /// 1 while the detector is powered, else 0.
    unsigned char fpga_get_IR_power();
    /// The index of the mounted lens, 0 to 6, or 255 when there is none that is known.
    unsigned char fpga_read_lenIndex();
    /// 1 while the lamp is on, else 0.
    unsigned char getLampStatus();
    /// 1 while the laser pointer is on, else 0.
    unsigned char getLaserStatus();
    /// 1 while the picture is frozen, else 0.
    unsigned char fpga_get_freeze_status();
    /// Temperature in °C and relative humidity in percent from the board's climate sensor.
    /// Returns 0, or -1 when the sensor does not answer: then the temperature is untouched if
    /// its word is missing, and the humidity in both cases. -1 for a null pointer, without a
    /// transfer.
    int fpga_get_sht11_temp_humid(float* temp, float* humid);
    /// Shutter temperature in °C, in steps of 1/256, into `*t`. Returns 0, or -1 for a null
    /// pointer. A failed read gives 0 °C.
    int fpga_read_shutterTemp(float* t);
    /// Detector temperature, as `fpga_read_shutterTemp`.
    int fpga_read_sensorTemp(float* t);
    /// @}

    /// @name Raw frames
    /// @{

    /// Reads a frame of 160 x 120 counts, row by row from the top, into `buf` (19200 words, the
    /// caller's). A first word of 0 is replaced by the second. Returns 0, or 255 for a null `buf`.
    unsigned char fpga_read_IRAD(unsigned short* buf);
    /// Reads a frame of 384 x 288 counts in eight parts into `buf` (110592 words, the caller's)
    /// and prints the milliseconds it took. A first word of 0 in a part is replaced by that part's
    /// second. Returns 0, or 255 for a null `buf`.
    unsigned char fpga_read_IRAD_384(unsigned short* buf);
    /// @}

    /// @name Frame statistics, in AD
    /// @{
    unsigned short fpga_get_auto_max(); ///< the highest count; 0 when the read failed
    unsigned short fpga_get_auto_min(); ///< the lowest count, likewise
    /// Mean of the frame, cut to a whole count; 0 when the FPGA counted no pixel.
    unsigned short fpga_get_auto_averg();
    /// Ends of the histogram. Returns the transfer result of the second read, the minimum's. A null
    /// pointer skips its own read and counts as refused.
    unsigned char fpga_get_zft_maxMin(unsigned short* max, unsigned short* min);
    /// Peak of the histogram. Returns the transfer result.
    unsigned char fpga_get_zft_most(unsigned short* most);
    /// The hottest pixel; in image mode 5 that of what is shown of the frame. Filled in
    /// any case, a value whose read failed with 0. Returns 0, or 255 on failure or a null pointer.
    unsigned char fpga_point_max_get(_point_max * p);
    /// The coldest pixel, as `fpga_point_max_get`.
    unsigned char fpga_point_min_get(_point_min * p);
    /// @}

    /// @name Measurement spots and areas, slots 0 to 16
    /// A slot above 16 and a null pointer are refused with 255 before any transfer. Points 12 to
    /// 16 share addresses with areas 0 and 1, area 5 with the two lines, areas 9 to 16 with the
    /// colour table: what was written last is in force.
    /// @{

    /// Moves spot `i`. Returns 0, or 255 on failure.
    unsigned char fpga_point_position_set(unsigned char i, _fpga_point* p);
    /// The count at spot `i`, 0 when the read failed. Returns the transfer result, 2 on success.
    unsigned char fpga_point_ad_get(unsigned char i, unsigned short* ad);
    /// Places area `i`. Returns 0, or 255 on failure.
    unsigned char fpga_area_set(unsigned char i, _area* a);
    /// Reads area `i`. Filled in any case, a value whose read failed with 0. Returns 0, or 255 on
    /// failure.
    unsigned char fpga_area_val_get(unsigned char i, _area_val* v);
    /// @}

    /// @name Measurement lines: 1 lies on a row, 2 on a column
    /// @{

    /// Shows or hides a line. Returns the transfer result, or -1 for another line number.
    int fpga_display_line(int line, bool on);
    /// Moves line 1 to row `y` or line 2 to column `x`. Returns the transfer result, or -1 for
    /// another line number, without a transfer.
    int fpga_set_line_position(int line, unsigned short x, unsigned short y);
    /// @}

    /// @name Display window and colours
    /// @{

    /// The level, in AD, that the FPGA's own control has chosen.
    unsigned short fpga_get_fpga_level();
    /// The span, in AD, that the FPGA's own control has chosen, low 16 bits; 255 when its gain
    /// register reads 0.
    unsigned short fpga_get_fpga_span();
    /// The level in force, in AD.
    unsigned short fpga_get_level();
    /// The span in force, in AD, low 16 bits; 16448 when the gain register reads 0.
    unsigned short fpga_get_span();
    /// Sets the window. `gain` is 4194304 / span. Returns the transfer result of the second write.
    unsigned char fpga_set_levelSpan(unsigned short level, unsigned int gain);
    /// Gives the window to the library (`on`) or back to the FPGA. Returns the transfer result.
    unsigned char fpga_start_level_span_control(bool on);
    /// Reads the first `len` bytes of the colour table. Returns the transfer result.
    unsigned char fpga_colorTable_get(void* buf, int len);
    /// Writes the colour table, 1044 bytes. Returns the transfer result, 20 on success, or 255
    /// for a null pointer.
    unsigned char fpga_colorTable_set(const unsigned char* table);
    /// Switches the isotherm. This and the next three return the transfer result.
    unsigned char fpga_set_iso_enable(bool on);
    unsigned char fpga_set_iso_type(unsigned char t);  ///< 0 below, 1 between, 2 above
    unsigned char fpga_set_iso_min(unsigned short ad); ///< lower bound, AD
    unsigned char fpga_set_iso_max(unsigned short ad); ///< upper bound, AD
    /// @}

    /// @name Picture composition
    /// Results are transfer results.
    /// @{

    /// Reads the image mode register whole into `*mode`.
    unsigned char fpga_get_image(unsigned char* mode);
    /// Sets the image mode, an `Image_Mode_t`; of a value outside it the low three bits.
    unsigned char fpga_set_image(Image_Mode_t mode);
    /// Place of the visible inset in the infrared picture, 0 to 3. The value is shifted into its
    /// field and not masked; the low byte of the result is written.
    unsigned char fpga_set_ccd_pipe_ir_position(int pos);
    /// Place of the infrared inset in the visible picture, 0 to 3, not masked either.
    unsigned char fpga_set_ir_pipe_ccd_position(int pos);
    /// Size switch of the visible share; any value but 0 is on.
    unsigned char fpga_set_CCD_Mix_IR_Size(int on);
    /// Size switch of the infrared share; any value but 0 is on.
    unsigned char fpga_set_IR_Mix_CCD_Size(int on);
    /// Blend as a fraction, 1.0 full. Sent as the low byte of `f` x 128 cut toward zero; what does
    /// not fit an int counts as its nearest end, NaN as 0.
    unsigned char set_CCD_mix_IR_percent(float f);
    /// Blend of the other composition, encoded alike.
    unsigned char set_IR_mix_CCD_percent(float f);
    /// Horizontal offset of the fused pictures.
    unsigned char set_mix_dx(char d);
    /// Vertical offset of the fused pictures.
    unsigned char set_mix_dy(char d);
    /// Zoom of the fused pictures; the low 16 bits are written.
    unsigned char set_mix_zoom(int z);
    unsigned char get_mix_dx();    ///< horizontal offset, the raw byte; 0 when the read failed
    unsigned char get_mix_dy();    ///< vertical offset, likewise
    unsigned short get_mix_zoom(); ///< zoom, the raw word, likewise
    unsigned char fpga_open_saturation(bool on); ///< shows saturated pixels
    unsigned char fpga_switch_colorBar(bool on); ///< shows the colour bar
    unsigned char fpga_freeze_image(bool on);    ///< the FPGA's freeze bit
    /// @}

    /// @name Lamp, laser, alarm, cameras and screens
    /// Results are transfer results.
    /// @{
    unsigned char fpga_open_alarm(bool on); ///< alarm output
    unsigned char openLaser(bool on);       ///< laser pointer
    /// Logs "open lamp:%d" as a Qt warning.
    unsigned char openLamp(bool on);
    /// Switches the visible camera and prints a line about it.
    unsigned char fpga_open_CCD(bool on);
    /// Video output mode; the low byte is written.
    unsigned char fpga_set_output_mode(int mode);
    /// Mode of the LCD; 255 becomes 1. Prints the mode that is written.
    unsigned char fpga_start_arm_lcd(unsigned char mode);
    /// Setting of the LCD, written as it is.
    unsigned char fpga_set_arm_lcd_jingDu(unsigned char v);
    /// @}

protected:
    int m_fd;        ///< descriptor of the device, negative when it is not open
    int m_imageMode; ///< the `Image_Mode_t` last set, -1 before the first
};
