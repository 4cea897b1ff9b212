{ All functions of the library for Delphi and Free Pascal. Paths are UTF-8: PAnsiChar(UTF8Encode(Path)).
  Every thread that calls them first masks floating-point exceptions, or the TensorFlow network may raise
  EInvalidOp: SetExceptionMask([exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow, exPrecision]),
  of unit Math. }
unit qorocv460;

interface

const
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

function findFaces: Integer; cdecl; external 'QOROCV460';
function testPass(Values: PDouble; var Count: Integer): Integer; cdecl; external 'QOROCV460';
function initModelsAtPath(Directory: PAnsiChar): Integer; cdecl; external 'QOROCV460';
function initModelNames: Integer; cdecl; external 'QOROCV460';
function initDetector: Integer; cdecl; external 'QOROCV460';

function findQORFaces(ImagePath, OutputPath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  MaxSide: Integer; Show: ByteBool; var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';
function processImage(ImagePath, OutputPath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  MaxSide: Integer; Show: ByteBool; var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';
function showImage(ImagePath: PAnsiChar; var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';

function findQORFacesInTread01(ImagePath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  Slot, MaxSide: Integer; var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';
function findQORFacesInTreadDebug(ImagePath, OutputPath: PAnsiChar; Results: PDouble;
  var ResultCount: Integer; Slot, MaxSide: Integer; Show: ByteBool;
  var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';
function findQORFacesHAARInTread_TR02(ImagePath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  Slot, MaxSide: Integer; Reserved: Pointer; var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';
function findQORFacesHAARInTreadWithMask02(ImagePath: PAnsiChar; Results: PDouble;
  var ResultCount: Integer; ModelKind, Slot, MaxSide, Reserved: Integer; var Width, Height: Integer;
  ViewPixels, MaskPixels, CropMaskPixels: PByte; CropBox: PDouble): Integer; cdecl; external 'QOROCV460';

function findQORFacesDUNInTread01(ImagePath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  ModelKind, Slot, MaxSide: Integer; var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';
function findQORFacesDUNInTread01Debug(ImagePath, OutputPath: PAnsiChar; Show: ByteBool;
  Results: PDouble; var ResultCount: Integer; ModelKind, Slot, MaxSide: Integer;
  var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';
function findQORFacesDUNInTread02(ImagePath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  ModelKind, Slot, MaxSide: Integer; var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';
function findQORFacesDUNInTread_TR02(ImagePath: PAnsiChar; Results: PDouble; var ResultCount: Integer;
  ModelKind, Slot, MaxSide: Integer; Reserved: Pointer; var Width, Height: Integer): Integer; cdecl;
  external 'QOROCV460';
function findQORFacesDUNInTreadWithMask01(ImagePath: PAnsiChar; Results: PDouble;
  var ResultCount: Integer; ModelKind, Slot, MaxSide: Integer; Reserved: NativeInt;
  var Width, Height: Integer; ViewPixels, MaskPixels: PByte): Integer; cdecl; external 'QOROCV460';
function findQORFacesDUNInTreadWithMask02(ImagePath: PAnsiChar; Results: PDouble;
  var ResultCount: Integer; ModelKind, Slot, MaxSide: Integer; Reserved: NativeInt;
  var Width, Height: Integer; ViewPixels, MaskPixels, CropMaskPixels: PByte;
  CropBox: PDouble): Integer; cdecl; external 'QOROCV460';
function findQORMulitFacesDUNInTread_TR02(ImagePath: PAnsiChar; Results: PDouble;
  var ResultCount: Integer; TileCol, GridCols, TileRow, GridRows: Integer;
  var TileWidth, TileHeight, TileLeft, TileTop: Integer; ModelKind, Slot, MaxSide: Integer;
  Reserved: NativeInt; var Width, Height: Integer): Integer; cdecl; external 'QOROCV460';

implementation

end.
