{ QOROCV460 for Delphi and Free Pascal, over QOROCV460Safe, which throws nothing and masks floating-point traps:
  faces as records and failures as exceptions first, and behind them every function of safe.h as it is there.
  Positions are pixels of the photograph. }
unit qorocv460safe;

{$ifdef FPC}{$mode delphi}{$endif}

interface

uses
  SysUtils;

const
  SafeLibrary = {$ifdef MSWINDOWS}'QOROCV460Safe.dll'{$else}'QOROCV460Safe'{$endif};

  { The numbers of qorocv460.h and safe.h, without their prefix. }
  Failed = -2;
  Unreadable = -1;
  Rejected = 0;
  FirstSlot = 1;
  LastSlot = 9;
  Caffe = 1;
  Tensorflow = 2;
  Landmarks = 68;
  Chin = 8;
  NoseBridge = 27;
  MaxRecords = 30;
  TestValues = 68;
  FaceRecord = 8;
  FaceResults = 241;
  HeadCentreRecord = 10;
  HeadCentreResults = 301;
  LandmarkRecord = 140;
  LandmarkResults = 4201;
  ViewSide = 1000;
  ViewBytes = 4000000;
  MaskSide = 192;
  MaskBytes = 147456;
  CropBox = 4;

type
  { What every failure is. }
  EQorocv460 = class(Exception);
  { Models cannot be opened; the message names them. }
  EModelsMissing = class(EQorocv460);
  { The photograph is not there, or is none; the message names it. }
  EUnreadablePhoto = class(EQorocv460);

  TDetector = (dtCascade, dtCaffe, dtTensorflow);

  TPoint2D = record
    X, Y: Double;
  end;

  TFace = record
    Left, Top, Right, Bottom: Double;
    NoseBridge, Chin, HeadCentre: TPoint2D;
  end;

  TFaces = array of TFace;

  TPhoto = record
    Width, Height: Integer;
    { The boxes that were found, which may be more than the 30 faces that are reported, and more where no
      landmarks could be fitted: then there are no faces. }
    Found: Integer;
    Faces: TFaces;
  end;

{ Tells where the models lie, under their short names. Once, before the first photograph and before any thread that
  looks at one is started. Raises EModelsMissing. }
procedure PlaceModels(const Directory: string);

{ Faces of a photograph, with the centre of the head by the colours above it. MaxSide is the length in pixels that
  the longer side is scaled to before; below 1 its own. One thread at a time per slot, and one kind of network, that of
  its first call with one: another raises EQorocv460. Raises EUnreadablePhoto for what is no photograph, EQorocv460 for
  what else goes wrong. }
function FindFaces(const Photo: string; Detector: TDetector = dtCaffe; Slot: Integer = FirstSlot;
  MaxSide: Integer = 1000): TPhoto;

{ A path as the functions below take it: PAnsiChar(Utf8(Path)). }
function Utf8(const Text: string): UTF8String;

{ The functions of safe.h. }

function qorocv460_version: PAnsiChar; cdecl; external SafeLibrary;
function qorocv460_lastError: PAnsiChar; cdecl; external SafeLibrary;
function qorocv460_missingModels(Code: Integer): PAnsiChar; cdecl; external SafeLibrary;

function qorocv460_findFaces: Integer; cdecl; external SafeLibrary;
function qorocv460_testPass(Values: PDouble; var Count: Integer): Integer; cdecl; external SafeLibrary;
function qorocv460_initModelsAtPath(Directory: PAnsiChar): Integer; cdecl; external SafeLibrary;
function qorocv460_initModelNames: Integer; cdecl; external SafeLibrary;
function qorocv460_initDetector: Integer; cdecl; external SafeLibrary;

function qorocv460_findQORFaces(ImagePath, OutputPath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  MaxSide: Integer; Show: ByteBool; var Width, Height: Integer): Integer; cdecl; external SafeLibrary;
function qorocv460_processImage(ImagePath, OutputPath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  MaxSide: Integer; Show: ByteBool; var Width, Height: Integer): Integer; cdecl; external SafeLibrary;
function qorocv460_showImage(ImagePath: PAnsiChar; var Width, Height: Integer): Integer; cdecl; external
  SafeLibrary;

function qorocv460_findQORFacesInTread01(ImagePath: PAnsiChar; Results: PDouble; var ResultCount: Integer; Slot,
  MaxSide: Integer; var Width, Height: Integer): Integer; cdecl; external SafeLibrary;
function qorocv460_findQORFacesInTreadDebug(ImagePath, OutputPath: PAnsiChar; Results: PDouble; var ResultCount:
  Integer; Slot, MaxSide: Integer; Show: ByteBool; var Width, Height: Integer): Integer; cdecl; external
  SafeLibrary;
function qorocv460_findQORFacesHAARInTread_TR02(ImagePath: PAnsiChar; Results: PDouble; var ResultCount:
  Integer; Slot, MaxSide: Integer; Reserved: Pointer; var Width, Height: Integer): Integer; cdecl; external
  SafeLibrary;
function qorocv460_findQORFacesHAARInTreadWithMask02(ImagePath: PAnsiChar; Results: PDouble; var ResultCount:
  Integer; ModelKind, Slot, MaxSide, Reserved: Integer; var Width, Height: Integer; ViewPixels, MaskPixels,
  CropMaskPixels: PByte; CropBox: PDouble): Integer; cdecl; external SafeLibrary;

function qorocv460_findQORFacesDUNInTread01(ImagePath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  ModelKind, Slot, MaxSide: Integer; var Width, Height: Integer): Integer; cdecl; external SafeLibrary;
function qorocv460_findQORFacesDUNInTread01Debug(ImagePath, OutputPath: PAnsiChar; Show: ByteBool; Results:
  PDouble; var ResultCount: Integer; ModelKind, Slot, MaxSide: Integer; var Width, Height: Integer): Integer;
  cdecl; external SafeLibrary;
function qorocv460_findQORFacesDUNInTread02(ImagePath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  ModelKind, Slot, MaxSide: Integer; var Width, Height: Integer): Integer; cdecl; external SafeLibrary;
function qorocv460_findQORFacesDUNInTread_TR02(ImagePath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  ModelKind, Slot, MaxSide: Integer; Reserved: Pointer; var Width, Height: Integer): Integer; cdecl; external
  SafeLibrary;
function qorocv460_findQORFacesDUNInTreadWithMask01(ImagePath: PAnsiChar; Results: PDouble; var ResultCount:
  Integer; ModelKind, Slot, MaxSide: Integer; Reserved: NativeInt; var Width, Height: Integer; ViewPixels,
  MaskPixels: PByte): Integer; cdecl; external SafeLibrary;
function qorocv460_findQORFacesDUNInTreadWithMask02(ImagePath: PAnsiChar; Results: PDouble; var ResultCount:
  Integer; ModelKind, Slot, MaxSide: Integer; Reserved: NativeInt; var Width, Height: Integer; ViewPixels,
  MaskPixels, CropMaskPixels: PByte; CropBox: PDouble): Integer; cdecl; external SafeLibrary;
function qorocv460_findQORMulitFacesDUNInTread_TR02(ImagePath: PAnsiChar; Results: PDouble; var ResultCount:
  Integer; TileCol, GridCols, TileRow, GridRows: Integer; var TileWidth, TileHeight, TileLeft, TileTop: Integer;
  ModelKind, Slot, MaxSide: Integer; Reserved: NativeInt; var Width, Height: Integer): Integer; cdecl; external
  SafeLibrary;

implementation

{$ifndef FPC}
uses
  SyncObjs;
{$endif}

var
  { The kind of each slot's first call with a network, which the slot keeps. By the other kind's order of colours it
    would find wrong faces. }
  Networks: array[FirstSlot..LastSlot] of Integer;

function Utf8(const Text: string): UTF8String;
begin
{$if defined(FPC) and defined(UNIX)}
  { Strings hold what the system gave, which is UTF-8 there already. }
  SetLength(Result, Length(Text));
  if Text <> '' then
    Move(Text[1], Result[1], Length(Text));
{$else}
  Result := UTF8Encode(Text);
{$ifend}
end;

procedure PlaceModels(const Directory: string);
var
  Missing: Integer;
begin
  Missing := qorocv460_initModelsAtPath(PAnsiChar(Utf8(Directory)));
  if Missing = Failed then
    raise EQorocv460.Create(string(qorocv460_lastError));
  if Missing <> 0 then
    raise EModelsMissing.Create('models missing in ' + Directory + ': ' + string(qorocv460_missingModels(Missing)));
end;

function PointAt(const Values: array of Double; At, Width, Height: Integer): TPoint2D;
begin
  Result.X := Values[At] * Width;
  Result.Y := Values[At + 1] * Height;
end;

function FaceAt(const Values: array of Double; At, Width, Height: Integer): TFace;
begin
  Result.Left := Values[At] * Width;
  Result.Top := Values[At + 1] * Height;
  Result.Right := Values[At + 2] * Width;
  Result.Bottom := Values[At + 3] * Height;
  Result.NoseBridge := PointAt(Values, At + 4, Width, Height);
  Result.Chin := PointAt(Values, At + 6, Width, Height);
  Result.HeadCentre := PointAt(Values, At + 8, Width, Height);
end;

procedure KeepNetwork(Kind, Slot: Integer);
const
  Names: array[Caffe..Tensorflow] of string = ('Caffe', 'TensorFlow');
var
  Before: Integer;
begin
  if (Slot < FirstSlot) or (Slot > LastSlot) then
    Slot := FirstSlot; { as the library reads it }
{$ifdef FPC}
  Before := InterlockedCompareExchange(Networks[Slot], Kind, 0);
{$else}
  Before := TInterlocked.CompareExchange(Networks[Slot], Kind, 0);
{$endif}
  if (Before <> 0) and (Before <> Kind) then
    raise EQorocv460.CreateFmt('slot %d keeps the %s network: the other kind takes another slot',
      [Slot, Names[Before]]);
end;

function FindFaces(const Photo: string; Detector: TDetector; Slot, MaxSide: Integer): TPhoto;
const
  Kinds: array[dtCaffe..dtTensorflow] of Integer = (Caffe, Tensorflow);
var
  Values: array[0..HeadCentreResults - 1] of Double;
  Path: UTF8String;
  Count, I: Integer;
begin
  Path := Utf8(Photo);
  Count := HeadCentreResults;
  Result.Faces := nil;
  if Detector = dtCascade then
    Result.Found := qorocv460_findQORFacesHAARInTread_TR02(PAnsiChar(Path), @Values, Count, Slot, MaxSide, nil,
      Result.Width, Result.Height)
  else
  begin
    KeepNetwork(Kinds[Detector], Slot);
    Result.Found := qorocv460_findQORFacesDUNInTread_TR02(PAnsiChar(Path), @Values, Count, Kinds[Detector], Slot,
      MaxSide, nil, Result.Width, Result.Height);
  end;
  if Result.Found = Failed then
    raise EQorocv460.Create(Photo + ': ' + string(qorocv460_lastError));
  if Result.Found = Unreadable then
    raise EUnreadablePhoto.Create(Photo + ' cannot be read');
  if Count < 1 then
    Exit;
  SetLength(Result.Faces, (Count - 1) div HeadCentreRecord);
  for I := 0 to High(Result.Faces) do
    Result.Faces[I] := FaceAt(Values, 1 + I * HeadCentreRecord, Result.Width, Result.Height);
end;

end.
