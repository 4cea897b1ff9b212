{ first_program MODELS PHOTO...: the box of every face in photographs, in pixels, by the TensorFlow network. }
program first_program;

{$ifdef FPC}{$mode delphi}{$endif}
{$apptype console}

uses
  SysUtils, qorocv460safe;

procedure Show(const Path: string);
var
  Photo: TPhoto;
  I: Integer;
begin
  Photo := FindFaces(Path, dtTensorflow);
  WriteLn(Path, ': ', Photo.Found, ' found');
  for I := 0 to High(Photo.Faces) do
    with Photo.Faces[I] do
      WriteLn('from ', Left:0:0, ', ', Top:0:0, ' to ', Right:0:0, ', ', Bottom:0:0);
end;

var
  I: Integer;

begin
  try
    PlaceModels(ParamStr(1));
  except
    on Error: EQorocv460 do
    begin
      WriteLn(Error.Message);
      Halt(2);
    end;
  end;
  for I := 2 to ParamCount do
    try
      Show(ParamStr(I));
    except
      on Error: EQorocv460 do
      begin
        WriteLn(Error.Message);
        ExitCode := 1;
      end;
    end;
end.
