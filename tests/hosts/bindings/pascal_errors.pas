{ pascal_errors MODELS PHOTO TEXT-FILE: what a Pascal host sees of everything that goes wrong. Ends with the number of
  what was not as expected. }
program pascal_errors;

{$ifdef FPC}{$mode delphi}{$endif}
{$apptype console}

uses
{$ifdef UNIX}
  cthreads,
{$endif}
  Classes, SysUtils, Math, qorocv460safe;

var
  Wrong: Integer = 0;
  Refused: Boolean = False;
  Refusal: string = '';
  Other: string = '';

procedure Expect(IsSo: Boolean; const What: string);
begin
  if not IsSo then
  begin
    WriteLn('not so: ', What);
    Inc(Wrong);
  end;
end;

procedure ExpectMissing(const Directory, Named: string);
begin
  try
    PlaceModels(Directory);
    Expect(False, 'missing models raise');
  except
    on Error: EModelsMissing do
      Expect(Pos(Named, Error.Message) > 0, 'the message names ' + Named + ': ' + Error.Message);
  end;
end;

procedure ExpectUnreadable(const Photo: string);
begin
  try
    FindFaces(Photo);
    Expect(False, Photo + ' raises');
  except
    on Error: EUnreadablePhoto do
      Expect(Pos(Photo, Error.Message) > 0, 'the message names ' + Photo);
  end;
end;

procedure ExpectFailureWithoutModels(const Photo: string);
begin
  try
    FindFaces(Photo, dtCaffe, 9);
    Expect(False, 'a network that is not there raises');
  except
    on Error: EQorocv460 do
      Expect(Pos('nowhere', Error.Message) > 0, 'the message says what OpenCV said: ' + Error.Message);
  end;
end;

{ Looks for faces on one slot until either thread was refused. }
procedure FindUntilRefused(const Photo: string; var Reason: string);
begin
  while not Refused do
    try
      FindFaces(Photo, dtCaffe, 3);
    except
      on Error: EQorocv460 do
      begin
        Reason := Error.Message;
        Refused := True;
      end;
    end;
end;

type
  TFinder = class(TThread)
  protected
    procedure Execute; override;
  end;

procedure TFinder.Execute;
begin
  FindUntilRefused(ParamStr(2), Other);
end;

procedure ExpectRefusalOfASecondThread(const Photo: string);
var
  Finder: TFinder;
begin
  Finder := TFinder.Create(False);
  FindUntilRefused(Photo, Refusal);
  Finder.WaitFor;
  Finder.Free;
  Expect(Pos('slot 3 is at work for another thread', Refusal + Other) > 0, 'a second thread is refused: ' + Refusal);
end;

procedure ExpectTrapsAsBefore(const Photo: string);
var
  Before: TFPUExceptionMask;
begin
  SetExceptionMask([exPrecision, exUnderflow, exDenormalized]);
  Before := GetExceptionMask;
  Expect(Length(FindFaces(Photo, dtTensorflow, 2).Faces) = 1, 'the TensorFlow network finds the face');
  Expect(GetExceptionMask = Before, 'the traps are as before');
end;

{ Where the networks see the face. One that is given its colours in the other's order sees it elsewhere. }
procedure ExpectFace(const Photo: string; Detector: TDetector; Slot, Left: Integer);
begin
  Expect(Round(FindFaces(Photo, Detector, Slot).Faces[0].Left) = Left, 'the face''s box begins at ' + IntToStr(Left));
end;

procedure ExpectRefusalOfTheOtherNetwork(const Photo: string; Slot: Integer);
begin
  try
    FindFaces(Photo, dtTensorflow, Slot);
    Expect(False, 'another network than the slot''s raises');
  except
    on Error: EQorocv460 do
      Expect(Pos('slot 1 keeps the Caffe network', Error.Message) > 0, 'the message says what: ' + Error.Message);
  end;
end;

procedure ExpectOneNetworkPerSlot(const Photo: string);
begin
  ExpectFace(Photo, dtCaffe, FirstSlot, 180);
  ExpectRefusalOfTheOtherNetwork(Photo, FirstSlot);
  ExpectRefusalOfTheOtherNetwork(Photo, 10);
  ExpectFace(Photo, dtTensorflow, 4, 179);
  Expect(FindFaces(Photo, dtCascade).Found > 0, 'the cascade takes any slot');
  ExpectFace(Photo, dtCaffe, FirstSlot, 180);
end;

begin
  ExpectMissing('nowhere', 'model06.xml');
  ExpectFailureWithoutModels(ParamStr(2));
  PlaceModels(ParamStr(1));
  ExpectUnreadable('no-such-photograph.jpg');
  ExpectUnreadable(ParamStr(3));
  ExpectTrapsAsBefore(ParamStr(2));
  ExpectOneNetworkPerSlot(ParamStr(2));
  ExpectRefusalOfASecondThread(ParamStr(2));
  WriteLn(Wrong, ' wrong');
  Halt(Wrong);
end.
