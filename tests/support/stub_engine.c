/* An engine that computes nothing: it uses every keyword in both modes. A value that it reads, puts back and reads
 * again should be the same; where it is not, INFO names the keyword. */
#include "vesk_engine.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

/* Each keyword and its arguments: i integer, r real, a array, s text; an item counted by position when read and named
 * by its ISC number when put: c constant, t time function, p parameter, o output, v output to a text file. */
static const char* const keywords =
    "IMPORT:i JMAS:i FILENAME:s SCALV:r CONVV:r IQOPT:i HYDROFILE:s LOPT:i NPSFILE:s NEGSLN:i INTYP:i BEDOPT:i "
    "BEDDT:r FRACMAXTS:r MAXDT:r MINDT:r NUMDT:i NPRINT:i NUMCONST:i NUMTF:i NUMSEG:i NUMSYS:i NRFLD:i NFIELD:i "
    "DTFUNC:irr PRINTFUNC:irr CONSTISC:ii CONSTDESC:is CONSTGROUPDESC:is CONSTVALUE:cr TFISC:ii TFDESC:is "
    "NBRKTF:ti BRKTF:tirr ALLBRKTF:taa ALLTFDATA:a ALLLOADDATA:a ALLBCDATA:a ALLFLOWDATA:a ALLEXCHANGEDATA:a "
    "PRINTTIMEFUNC:a BOTSEG:ii SEGTYPE:ii VOLUME:ir VMULT:ir VEXP:ir DMULT:ir DEXP:ir SEGLENGTH:ir SEGWIDTH:ir "
    "SEGSLOPE:ir SEGROUGH:ir SEGMINDEPTH:ir NOPAM:ii ISCPARAM:iii CONSTPARAM:ipr GSYSPASS:ii NORSYSPASS:ii "
    "NOQSYSPASS:ii JMASS:ii IFIELD:ii DENSITY:ir CMAX:ir SCALB:ir CONVB:ir SCALW:ir CONVW:ir NOBC:ii SYSNAME:is "
    "IBC:iii NBFP:iii BOUNDFUNC:iiirr ALLBOUNDFUNC:iiaa NOWK:ii IWK:iii NBWK:iii LOADFUNC:iiirr ALLLOADFUNC:iiaa "
    "INITC:iir FDISS:iir SCALEPARAM:pr DESCPARAM:is NTEX:ii SCALER:ir CONVR:ir NORS:iii XAREA:iiir LENGTH:iiir "
    "JRSEG:iiii IRSEG:iiii NOBRKS:iii NORFUNC:iiirr NINQ:ii SCALEQ:ir CONVQ:ir NOQS:iii JQ:iiii IQ:iiii BQ:iiir "
    "NBRKQ:iii NOQFUNC:iiirr FLOWFUNCDESC:iis EXCHANGEFUNCDESC:iis FINDBOUND: INFO:s ICONINFO:is CLEARINFO: "
    "PROGRESS:i STATUS:si GRIDINIT:siii GRIDDATA:aiii CANCEL:i SEEDDATE:iii SEEDTIME:iii HYDSKIPJULIAN:r "
    "ENDJULIAN:r HYDSKIPDATE:iii HYDSKIPTIME:iii DAYS:r DONE: GRIDUPDATE: MODELTYPE:i MAXSEG:i MAXTRANFUNC:i "
    "MAXBREAK:i MAXBOUND:i MAXLOAD:i SPRINTFI:ssi SPRINTFR:ssr SPRINTFII:ssii SPRINTFRR:ssrr SPRINTFIR:ssir "
    "SPRINTFRI:ssri SEGNAME:is ICRD:i VESKTOVESKLINK:i HYDROTYPE:i SOLUTIONTYPE:i DEBUG:i WINHANDLE:i ELAPSED:i "
    "NUMOP:i OPISC:ii OPENABLED:oi OPUNITS:os OPSHORTDESC:os OPDESCRIPTION:os CSVOPDESCRIPTION:vs "
    "CSVOPSHORTDESC:vs NUMCSVOP:i CSVOPISC:ii CSVOPENABLED:vi CSVOPUNITS:vs CSVOPFILENAME:vs NUMPROJECTFILES:i "
    "PROJECTFILE:is RETURNCODE:i ";

typedef union {
  int32_t integer;
  float real;
  float array[4096];
  char text[4096];
} word;

static word words[5], before[5]; /* the registered arrays must live on */
static float registered[4096];

static void call(vesk_data_callback data_callback, char mode, const char* keyword) {
  char name[24] = {mode};
  strcpy(name + 1, keyword);
  void* first =
      mode == 'P' && strstr("ALLTFDATA ALLLOADDATA ALLBCDATA ALLFLOWDATA ALLEXCHANGEDATA PRINTTIMEFUNC", keyword)
          ? (void*)registered
          : (void*)&words[0];
  data_callback(name, first, &words[1], &words[2], &words[3], &words[4]);
}

/* The ISC number of the first item that is switched on; 0 when the arguments are numbered in no such way. */
static int32_t isc_number(vesk_data_callback data_callback, char kind) {
  int32_t one = 1, isc = 0;
  if (kind == 'p') data_callback("GISCPARAM", &one, &one, &isc, 0, 0);
  if (kind == 'c') data_callback("GCONSTISC", &one, &isc, 0, 0, 0);
  if (kind == 't') data_callback("GTFISC", &one, &isc, 0, 0, 0);
  if (kind == 'o') data_callback("GOPISC", &one, &isc, 0, 0, 0);
  if (kind == 'v') data_callback("GCSVOPISC", &one, &isc, 0, 0, 0);
  return isc;
}

static void set_up(const char* arguments) {
  memset(words, 0, sizeof words);
  for (int i = 0; arguments[i]; ++i) {
    if (arguments[i] == 'r' || arguments[i] == 'a')
      words[i].real = 1;
    else if (arguments[i] == 's')
      strcpy(words[i].text, "1");
    else
      words[i].integer = 1;
  }
}

static void read_put_read(vesk_data_callback data_callback, const char* keyword, const char* arguments) {
  set_up(arguments);
  call(data_callback, 'G', keyword);
  memcpy(before, words, sizeof words);
  for (int i = 0; arguments[i]; ++i) {
    const int32_t isc = isc_number(data_callback, arguments[i]);
    if (isc) words[i].integer = isc;
  }
  call(data_callback, 'P', keyword);
  for (int i = 0; arguments[i]; ++i)
    if (strchr("ctpov", arguments[i])) words[i].integer = 1;
  call(data_callback, 'G', keyword);
  if (memcmp(before, words, sizeof words)) data_callback("PINFO", (void*)keyword, 0, 0, 0, 0);
}

void execute_model(const char* library, vesk_data_callback data_callback) {
  char keyword[24], arguments[8];
  (void)library;
  for (const char* rest = keywords; sscanf(rest, "%23[A-Z]:", keyword) == 1; rest = strchr(rest, ' ') + 1) {
    if (sscanf(strchr(rest, ':'), ":%7[a-z]", arguments) != 1) arguments[0] = 0;
    read_put_read(data_callback, keyword, arguments);
  }
}

void get_maximum_parameters(const char* library, vesk_data_callback data_callback) {
  static const char* const limits[] = {"PMAXSEG", "PMAXTRANFUNC", "PMAXBREAK", "PMAXBOUND", "PMAXLOAD"};
  int32_t limit = 1000;
  (void)library;
  for (int i = 0; i < 5; ++i) data_callback(limits[i], &limit, 0, 0, 0, 0);
}

void import_export(vesk_data_callback data_callback, int flag) {
  (void)flag;
  execute_model("", data_callback);
}
void import_network(vesk_data_callback data_callback) {
  execute_model("", data_callback);
}
void load_restart_file(vesk_data_callback data_callback) {
  execute_model("", data_callback);
}
void read_hyd_file(vesk_data_callback data_callback) {
  execute_model("", data_callback);
}
