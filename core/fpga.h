#pragma once

/// @file
/// The façade `FPGA`, with all that a host needs.

#include "../calib/modify.h"
#include "../device/fpgabottom.h"
#include "../device/records.h"
#include "../device/selftest.h"
#include "../device/serial.h"
#include "../display/isohandler.h"
#include "../display/levelspan.h"
#include "../display/palette.h"
#include "../measure/calctrans.h"
#include "../measure/irpara.h"
#include "../measure/reading.h"
#include "../measure/temphandler.h"
#include "../measure/tempinfotab.h"
#include "vsk.h"

#include <QString>

namespace irmcore {
struct Window;
}

/// The camera, as a host sees it. A host constructs one `FPGA` in a process, uses it from one
/// thread, and destroys it last. The register operations of `FPGABottom` are methods of it too.
///
/// Thread-bound.
///
/// Operations that read a file wait up to 20 ms when it has just been written.
///
/// Construction never fails: a missing device is reported by whatever misses it, a missing
/// file gives defaults. Traces go to standard output, failures of system calls to standard error.
///
/// Terms: the *system parameters* are those set for the whole picture; a query can bring its own.
/// The *window* is the span of counts that the picture's colours cover, from the level to level +
/// span. The *limits* are the counts between which the automatic window stays.
class [[gnu::visibility("default")]] FPGA : public FPGABottom {
public:
    // --- life and versions: core/fpga_startup.cpp, core/fpga.cpp ---

    /// Opens the device, loads the calibration table of the mounted lens and the range last
    /// chosen, brings the shutter term up to date, loads the system parameters, and takes over the
    /// window that the FPGA is showing.
    FPGA();
    /// Ends the link to the core first, see `Serial`.
    ~FPGA();
    /// Sends the detector core the integration time of the range and sets the LCD; a core of
    /// generation 0 or -1 gets the VSK instead of the latter. Of the three commands that generation
    /// -1 takes only the last is certain to arrive, see `Serial`. A host calls it once, after
    /// construction, and leaves the core 0.5 s before the next command.
    void init();

    /// "QRV20180705.2.00".
    QString getDllVersion();
    /// The detector core's FPGA version; empty until it is known.
    QString getCoreFPGAVerisonStr();
    /// The detector core's CPU version; empty until it is known.
    QString getCoreCpuVerisonStr();
    /// Command generation of the detector core: -1, 0 or 1; construction sets 1.
    int getCoreVersionNum();
    /// Index of the lens as last read, -1 when there was none; the FPGA is not asked.
    int getLenIndex();
    /// Mode of the LCD, see `fpga_start_arm_lcd`.
    unsigned char start_arm_lcd(char value);
    /// The calibration table and drift terms in force; owned by this object.
    IRPara& getIRPara();
    /// The link to the detector core; owned by this object.
    Serial* getSerial();

    // --- parameter file: core/fpga_settings.cpp ---

    /// Loads all system parameters from "Parameter/Setting" and applies them to both models.
    void setSystemTempPara();
    /// Loads emissivity, distance and offset from "Parameter/Setting" without applying them.
    void readTempSetup();

    // --- range, lens and VSK: core/fpga_range.cpp ---

    /// Takes `range` and sets the detector core up for it, with the raw integration time `intTime`;
    /// loads no table. Of the two commands that a core of generation -1 takes only the second is
    /// certain to arrive.
    void changeTempRange(int range, unsigned short intTime);
    /// Takes `range` and loads its table; the limits of the window follow, those of the measuring
    /// range do not (`setTempRangeMinMax`).
    void setTempRange(int range);
    /// Sends the core the base VSK of range 0 or 1, and takes its reference temperature from
    /// "Parameter/Setting". Other ranges send nothing.
    void setVSK(int range);
    /// Asks the FPGA for the lens, and loads its table if it is another one. Returns its index, -1
    /// for none.
    int get_set_lenIndex();
    /// Limits of the measuring range in °C, for both models.
    void setTempRangeMinMax(int min, int max);

    // --- commands of the detector core, see Serial: device/fpga_corecommands.cpp ---

    int setIntTime(int range, unsigned short t); ///< takes `range` too; returns 0
    int insideShutter();                         ///< see `Serial::insideShutter`
    int insideShutterNoVSK();                    ///< see `Serial::insideShutterNoVSK`
    int autoShutter(bool on);                    ///< see `Serial::autoShutter`
    int setSerialVSK(unsigned short v);          ///< prints a line
    int getSerialVSK(unsigned short* v);         ///< a query, see `Serial::readSerialVSK`
    int getSerialSum(unsigned short* v);         ///< a query, see `Serial::readSerialSum`

    // --- sensor and shutter temperature: device/fpga_tracking.cpp ---

    /// Reads the sensor temperature and takes its distance from the reference, times 4.8 below
    /// 31 °C and 1.6 from there on, as the drift that every reading is corrected by. Returns it, in
    /// °C.
    float updateDeltaTemp();
    /// The drift in °C. While the FPGA's picture is frozen it is set to 0.
    float getDeltaTemp();
    /// Reads the sensor temperature and takes it as the reference. With a core of generation 0 or
    /// -1 and `adjustVSK` the core's VSK follows the inside temperature.
    void updateSensorTemp(bool adjustVSK);
    /// Takes `t` (°C) as the sensor's reference temperature; the drift becomes 0. The flag is not
    /// used.
    void setSensorTemp(float t, bool);
    float getSensorTemp(); ///< the sensor's reference temperature, °C
    /// Takes the shutter temperature in °C; nothing else follows from it.
    void setShutterTemp(float t);
    float getShutterTemp(); ///< as last read or set, °C
    /// Takes the lens temperature in °C, for the calibration table's record too.
    void setLenTemp(float t);
    float getLenTemp(); ///< as last set, °C
    /// The shutter temperature in °C that the shutter term comes from.
    float getModifyShutterTemp();
    /// Reads shutter and sensor temperature, reloads the calibration table and brings it to the
    /// inside temperature (their mean). Inside temperature times modify factor is the corrected
    /// shutter temperature, which the shutter term then comes from; the limits follow. While the
    /// picture is frozen the shutter term keeps its temperature; the limits still follow the
    /// reloaded table. A temperature whose read fails counts as 0 °C. The flag is not used.
    void updateShutterTemp(bool);

    // --- calibration tables: measure/fpga_tablefiles.cpp ---

    /// A copy of the table in force, with the temperatures in use.
    TempInfoTab getTempInfoTab();
    /// Loads and installs the table of a lens and range, or its fallback; the limits follow. What
    /// is missing or unreadable in the file takes its default. Returns 0.
    int setSystemAdToTempTab(int lens, int range);
    /// Takes the range from "Parameter/Setting" and loads its table for the current lens. Returns
    /// 0.
    int setSystemAdToTempTab();
    /// Fills `tab` from a table file. A limit, base temperature or count of entries that the file
    /// does not give takes its default, a count outside 0 to 60 the nearer end; entries not given
    /// and all else stay as they are. Returns 1; null pointers change nothing.
    int readTable(const char* fileName, TempInfoTab* tab);

    // --- calibration correction: calib/fpga_correction.cpp ---

    /// Calibration mode, for both models: readings also carry `biaoDingTemp`.
    void startBiaoDing(bool on);
    /// 0 when the table rises and every modify factor is above 0.1 and below 3; -1 for a table
    /// that is empty or does not rise, -2 for a factor out of range.
    int checkBiaoDingTab();
    /// A count of a scene at `calibTemp` °C, taken at the inside temperature `innerTemp`, brought
    /// to the reference of the range, see `irmcore::toReference`. The first two are not used.
    unsigned short BiaoDingXiuzheng(float sensorTemp, float shutterTemp, float innerTemp,
                                    int calibTemp, unsigned short ad);
    /// The inverse, see `irmcore::fromReference`.
    unsigned short BiaoDingXiuzhengGet(float sensorTemp, float shutterTemp, float innerTemp,
                                       int calibTemp, unsigned short ad);
    /// The modify factor last looked up.
    float getModifyValue();

    // --- Modify files: calib/fpga_modifyfile.cpp ---

    /// Reads the Modify file for a lens and range, or the one shared by all, into `s_modify`. A
    /// factor that is missing or 0 takes the nearest below, the lowest where there is none below;
    /// without any all are 1.
    void updateModify(int len, int temp);
    void updateModify(int len); ///< the same for range 0

    // --- measurement parameters: measure/fpga_parameters.cpp ---

    /// Takes the system parameters. They are stored, and applied if their model accepts them; the
    /// limits follow. Returns 1.
    int setSystemTempSetup(TempSetup setup);
    /// The system parameters that are applied.
    TempSetup getSystemTempSetup();
    /// Air temperature in °C, for both models; the limits follow.
    void setEnvTemp(float t);
    /// Relative humidity as a fraction, for both models; the limits follow.
    void setHumid(float humid);
    /// Temperature of the reflected surroundings in °C, for both models; the limits follow.
    void setReflecTemp(float t);

    // --- queries: measure/fpga_queries.cpp ---

    /// The count at `pt`, measured with spot slot `index` & 255; 0 when that fails.
    unsigned int getSpotAD(int index, _fpga_point& pt);
    /// A spot's temperature. `type` 0: at `pt`, with spot slot `index` & 255; 1: the frame's
    /// hottest point, 2: its coldest, whose position is put into `pt`. `setup` counts with
    /// `PARA_CUSTOM`. Returns 0; -1 for a negative index or another type (nothing is written), and
    /// when the FPGA does not take the position or deliver the point ("NULL" in `out`'s status;
    /// `pt` becomes (0, 0) for types 1 and 2).
    int getSpotTemp(int index, int type, ParaMode_t mode, TempSetup const& setup, _fpga_point& pt,
                    IrTempStru& out);
    /// The temperature at `pt` on line 1 or 2, measured with spot slot 4 or 5 (0 for another line).
    /// Returns 0, or -1 with "NULL" in `out`'s status.
    int getLineTemp(int line, ParaMode_t mode, TempSetup const& setup, _fpga_point& pt,
                    IrTempStru& out);
    /// Highest, lowest and mean reading of the area, measured with area slot `index` & 255. A count
    /// whose read failed is 0. Returns 0, or -1 with nothing written when the area is refused.
    int getAreaTemp(int index, _area& area, ParaMode_t mode, TempSetup const& setup, _area_val& val,
                    Area_Temp& out);
    /// The temperature of every pixel: `count` words of a raw frame to temperatures in °C and to
    /// statuses, 0 "OK", 1 "L", 2 "LE", 3 "HE", 4 "H", each as `TempHandler::irAD2Temp` gives it.
    /// `temp` or `status` may be null when it is not wanted; the buffers are the caller's, hold
    /// `count` elements each and do not overlap. The FPGA is asked once whether the image is
    /// frozen. Returns 0, or -1 with nothing written when `ad` or both outputs are null or `count`
    /// is negative.
    ///
    /// Each count is converted once and looked up from then on, until table, shutter term,
    /// parameters, limits or drift correction change. The first frame takes 832 kB of memory for
    /// each of the two sets of parameters, which stay until the end.
    int getFrameTemp(const unsigned short* ad, int count, ParaMode_t mode, TempSetup const& setup,
                     float* temp, unsigned char* status);
    /// Readings at the two ends of the window; a null pointer is passed over. Applies the system
    /// parameters as last given again; if they are out of range their line is printed again.
    void getMinMaxTemp(IrTempStru * minOut, IrTempStru * maxOut);
    /// Places the window from the frame's extremes and mean, then reports its ends likewise.
    void getAutoMinMaxTemp(IrTempStru * minOut, IrTempStru * maxOut);

    // --- level and span: display/fpga_levelspan.cpp ---

    /// Keeps the mode, which isotherms in fractions of the window look at; does not move the
    /// window.
    void setLevelSpanMode(Mode_t mode);
    /// Does nothing.
    void autoLevel(float);
    /// Does nothing.
    void autoSpan(float);
    /// One step of the automatic window: `LEVELSPAN_AUTO` from the frame's extremes and mean,
    /// `LEVELSPAN_ZFT` from its histogram; other modes leave it. With `smooth` a quarter of the new
    /// window is mixed with three quarters of the old. The first call in a process takes the window
    /// over from the FPGA.
    void calcLevelSpan(Mode_t mode, bool smooth);
    /// Lays the window between two object temperatures in °C, without limits, after applying the
    /// system parameters like `getMinMaxTemp`. Returns 1, also when a temperature cannot be
    /// converted and the window stays.
    int handLevelSpan(float minTemp, float maxTemp);
    /// Takes over the window that the FPGA's own control shows, then gives control to the library
    /// (`on`) or back to the FPGA. Returns the transfer result of the latter.
    unsigned char startLevelSpanControl(bool on);

    // --- palettes: display/fpga_palette.cpp ---

    /// Takes a built-in palette and shows it. Returns the transfer result; 255, with nothing
    /// changed, for an index that is none.
    unsigned char setStandardPaletteIndex(COLOR_TABLE index);
    /// Copies 256 entries of the host's as palette `COLOR_CUSTOM` and shows them. Returns the
    /// transfer result; 255, with nothing changed, for a null pointer.
    unsigned char setCustomPalette(_yuv_item * palette);
    /// A built-in table of 258 entries, the library's own and always there; null for an index that
    /// is none.
    const _yuv_item* getColorTable(int index);
    /// The palette last selected; `COLOR_IRON` before any was, with an empty table.
    COLOR_TABLE getPaletteIndex();
    /// The working table of 261 entries, never with an isotherm in it; owned by this object. All
    /// zero until a palette is selected. Changes are shown by the next `palette_cal`.
    _yuv_item* getCurrentPalette();
    /// Uploads the working table, with the isotherm coloured in while that is on. The argument is
    /// not used. Returns the transfer result, 20 for all 1044 bytes.
    unsigned char palette_cal(_yuv_item*);

    // --- isotherms: display/fpga_isotherm.cpp ---

    /// Switches the isotherm and shows the picture with it or without. Returns the transfer result
    /// of the colour table.
    unsigned char setIsoSwitch(bool on);
    bool getIsoSwitch();   ///< as last set; the FPGA is not asked
    Isotherm getIsoPara(); ///< a copy of the settings
    /// Takes the settings and converts their temperatures. The picture and the FPGA's limits follow
    /// at the next `palette_cal` while the isotherm is on; the FPGA is told the type at once.
    void setIsoPara(Isotherm iso);
    /// Converts two temperatures in °C to the isotherm's limits, with the system parameters.
    void getIsoTempStru(float minTemp, float maxTemp);
    /// Places the band in the present window. The FPGA gets the limits too, except when they are
    /// fractions.
    void setIsoIndex();

    // --- composition: display/fpga_composition.cpp ---

    /// What the screen shows. Returns the transfer result, as the next two.
    unsigned char setImageMode(Image_Mode_t mode);
    /// Where the visible inset lies in the infrared picture.
    unsigned char set_CCD_Pipe_IR_Position(Image_Position_t pos);
    /// Where the infrared inset lies in the visible picture.
    unsigned char set_IR_Pipe_CCD_Position(Image_Position_t pos);
    /// Freezes or releases the picture. While it is frozen the shutter temperature in use stays;
    /// the release applies the one last computed. Returns the transfer result.
    unsigned char freeze_image(bool on);
    /// Whether the picture is frozen, as last set; the FPGA is not asked.
    bool getFreezeImageStatus();
    /// Keeps a flag for the host; the FPGA's saturation display is `fpga_open_saturation`.
    void setSaturation(bool const& on);
    bool const& getSaturation() const; ///< the flag, as long as this object lives
    /// Does nothing.
    void saturation();
    /// Output mode of the video encoder. Returns the transfer result.
    unsigned char setADV7179Mode(int mode);

protected:
    TempHandler* m_sysTempHandler;   ///< the system parameters' model; owned
    TempHandler* m_queryTempHandler; ///< the model of queries with their own parameters; owned
    COLOR_TABLE m_paletteIndex;      ///< the palette last selected
    _yuv_item m_colorTable[irmcore::colorTableSize]; ///< as for the FPGA, without the isotherm
    bool m_saturation;                               ///< the host's flag
    bool m_isoSwitch;                                ///< whether the isotherm is on
    ISOHandler m_isoHandler;                         ///< the isotherm's settings and band
    IrTempStru m_isoMinStru;      ///< lower limit of the isotherm as last converted
    IrTempStru m_isoMaxStru;      ///< upper limit of the isotherm as last converted
    unsigned short m_level;       ///< lower end of the window, AD
    unsigned short m_span;        ///< width of the window, AD
    TempSetup m_sysTempSetup;     ///< the system parameters as last given
    Serial* m_serial;             ///< the link to the core; owned
    Mode_t m_levelSpanMode;       ///< as last given to `setLevelSpanMode`
    TempSetup m_fileTempSetup;    ///< copy of `m_sysTempSetup` by `readTempSetup`
    float m_lenTemp;              ///< °C
    float m_shutterTemp;          ///< °C
    float m_sensorTemp;           ///< reference, °C
    int m_lenIndex;               ///< -1 for none
    int m_tempRange;              ///< index of the measuring range
    TempInfoTab m_tempInfoTab;    ///< the table as loaded
    int m_coreVersionNum;         ///< command generation of the core: -1, 0 or 1
    float m_modifyValue;          ///< modify factor last looked up
    float m_deltaTemp;            ///< drift since the reference, °C
    bool m_freeze;                ///< whether the picture is frozen, as last seen
    float m_modifyShutterTemp;    ///< corrected shutter temperature of the last update, °C
    QString m_coreCpuVersionStr;  ///< empty until it is known
    QString m_coreFPGAVersionStr; ///< empty until it is known
    IRPara m_irPara;              ///< the table in force and its drift terms

private:
    /// Sets the limits from the ends of a range, with the system parameters.
    [[gnu::visibility("hidden")]] void updateLevelSpanLimits(int range);
    /// The window over the frame's extremes and mean, or over its histogram, within the limits.
    [[gnu::visibility("hidden")]] irmcore::Window frameWindow(int minSpan);
    [[gnu::visibility("hidden")]] irmcore::Window histogramWindow(int minSpan);
    /// Takes the sensor's present temperature as the reference.
    [[gnu::visibility("hidden")]] void readReferenceSensorTemp();
    /// The lens the FPGA reports, -1 for none.
    [[gnu::visibility("hidden")]] int readLens();
    /// The range's base VSK at the sensor's reference temperature; moves the VSK's reference.
    [[gnu::visibility("hidden")]] unsigned short compensatedVsk(int range);
    /// Makes `window` the window in force.
    [[gnu::visibility("hidden")]] void placeWindow(irmcore::Window window);
    /// Makes `palette` the working table and shows it.
    [[gnu::visibility("hidden")]] unsigned char takePalette(COLOR_TABLE index,
                                                            const _yuv_item* palette);
    /// After a change of the window: brings the isotherm in line with it.
    [[gnu::visibility("hidden")]] void followWindow();
    /// The model of `mode`, with `setup` applied if it is the queries'.
    [[gnu::visibility("hidden")]] TempHandler& handlerFor(ParaMode_t mode, TempSetup const& setup);

    struct Private;
    Private* m_private; ///< room for state of the library's own: keeps the object's size
};

/// Not used by the library; for the host. Zero at first.
[[gnu::visibility("default")]] extern TempSetup m_tempsetup;
/// Not used by the library; for the host. 1 at first.
[[gnu::visibility("default")]] extern double m_shutterTempModify;
