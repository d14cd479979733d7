#include "apps/tarn7d/DemoScenes.h"

#include <string_view>

namespace tarn7d {

namespace {

// Painted scenes are one picture, computed once, over which a camera moves: a formula for every pixel of
// every picture would take minutes. {size}, {rate} and {frames} are replaced.
constexpr std::string_view sunset =
    "nullsrc=s=960x540:r={rate}:d=1,trim=end_frame=1,format=gbrp,geq="
    "r='st(0,hypot(X-0.5*W,Y-0.47*H)/H);st(1,Y/(0.6*H));st(2,255*exp(-6*ld(0)));"
    "if(lt(Y,0.6*H),if(lt(ld(0),0.09),255,clip(70+150*ld(1)+ld(2),0,255)),"
    "clip(42+10*sin(Y*0.5+sin(X*0.03))+(120+90*sin(Y*0.8+2*sin(X*0.02)))"
    "*exp(-pow((X-0.5*W)/(0.05*W+0.5*(Y-0.6*H)),2)),0,255))':"
    "g='st(0,hypot(X-0.5*W,Y-0.47*H)/H);st(1,Y/(0.6*H));st(2,190*exp(-8*ld(0)));"
    "if(lt(Y,0.6*H),if(lt(ld(0),0.09),228,clip(30+70*ld(1)*ld(1)+ld(2),0,255)),"
    "clip(24+5*sin(Y*0.5+sin(X*0.03))+(80+60*sin(Y*0.8+2*sin(X*0.02)))"
    "*exp(-pow((X-0.5*W)/(0.05*W+0.5*(Y-0.6*H)),2)),0,255))':"
    "b='st(0,hypot(X-0.5*W,Y-0.47*H)/H);st(1,Y/(0.6*H));"
    "if(lt(Y,0.6*H),if(lt(ld(0),0.09),150,clip(110-60*ld(1)+60*exp(-9*ld(0)),0,255)),"
    "clip(62-8*sin(Y*0.5+sin(X*0.03))+30*exp(-pow((X-0.5*W)/(0.05*W+0.5*(Y-0.6*H)),2)),0,255))',"
    "zoompan=z='1+0.0015*on':x='(iw-iw/zoom)/2':y='(ih-ih/zoom)*0.45':d={frames}:s={size}:fps={rate}";

constexpr std::string_view hills =
    "nullsrc=s=960x540:r={rate}:d=1,trim=end_frame=1,format=gbrp,geq="
    "r='st(1,0.45*H+0.08*H*sin(X*0.006)+0.03*H*sin(X*0.02+1));"
    "st(2,0.6*H+0.07*H*sin(X*0.008+2)+0.02*H*sin(X*0.03));st(3,0.77*H+0.06*H*sin(X*0.01+4));"
    "if(gt(Y,ld(3)),18,if(gt(Y,ld(2)),52,if(gt(Y,ld(1)),96,150+90*Y/H)))':"
    "g='st(1,0.45*H+0.08*H*sin(X*0.006)+0.03*H*sin(X*0.02+1));"
    "st(2,0.6*H+0.07*H*sin(X*0.008+2)+0.02*H*sin(X*0.03));st(3,0.77*H+0.06*H*sin(X*0.01+4));"
    "if(gt(Y,ld(3)),36,if(gt(Y,ld(2)),76,if(gt(Y,ld(1)),120,170+60*Y/H)))':"
    "b='st(1,0.45*H+0.08*H*sin(X*0.006)+0.03*H*sin(X*0.02+1));"
    "st(2,0.6*H+0.07*H*sin(X*0.008+2)+0.02*H*sin(X*0.03));st(3,0.77*H+0.06*H*sin(X*0.01+4));"
    "if(gt(Y,ld(3)),44,if(gt(Y,ld(2)),92,if(gt(Y,ld(1)),150,210-20*Y/H)))',"
    "zoompan=z='1.15':x='iw*0.13*on/{frames}':y='ih*0.05':d={frames}:s={size}:fps={rate}";

constexpr std::string_view city =
    "nullsrc=s=960x540:r={rate}:d=1,trim=end_frame=1,format=gbrp,geq="
    "r='st(0,H*(0.35+0.4*abs(sin(floor(X/60)*12.9898))));st(1,mod(X,60));if(gt(Y,ld(0))*gt(ld(1),4),"
    "if(gt(mod(X,10),3)*gt(mod(Y,14),6)*gt(sin(floor(X/10)*7.13+floor(Y/14)*3.77),0.35),250,18),20+60*Y/H)':"
    "g='st(0,H*(0.35+0.4*abs(sin(floor(X/60)*12.9898))));st(1,mod(X,60));if(gt(Y,ld(0))*gt(ld(1),4),"
    "if(gt(mod(X,10),3)*gt(mod(Y,14),6)*gt(sin(floor(X/10)*7.13+floor(Y/14)*3.77),0.35),200,20),16+30*Y/H)':"
    "b='st(0,H*(0.35+0.4*abs(sin(floor(X/60)*12.9898))));st(1,mod(X,60));if(gt(Y,ld(0))*gt(ld(1),4),"
    "if(gt(mod(X,10),3)*gt(mod(Y,14),6)*gt(sin(floor(X/10)*7.13+floor(Y/14)*3.77),0.35),110,34),60+50*Y/H)',"
    "zoompan=z='1.25-0.001*on':x='(iw-iw/zoom)/2':y='(ih-ih/zoom)/2':d={frames}:s={size}:fps={rate}";

constexpr std::string_view aurora =
    "nullsrc=s=480x270:r={rate}:d=1,trim=end_frame=1,format=gbrp,geq="
    "r='st(0,0.5*H+0.12*H*sin(X*0.013)+0.05*H*sin(X*0.041));"
    "clip(12+90*exp(-pow((Y-ld(0)+30)/60,2))*(0.6+0.4*sin(X*0.11)),0,255)':"
    "g='st(0,0.5*H+0.12*H*sin(X*0.013)+0.05*H*sin(X*0.041));"
    "clip(16+200*exp(-pow((Y-ld(0))/if(lt(Y,ld(0)),70,14),2))*(0.65+0.35*sin(X*0.11)),0,255)':"
    "b='st(0,0.5*H+0.12*H*sin(X*0.013)+0.05*H*sin(X*0.041));"
    "clip(40+30*Y/H+130*exp(-pow((Y-ld(0)+50)/90,2)),0,255)',"
    "zoompan=z='1.3':x='iw*0.2*on/{frames}':y='ih*0.1':d={frames}:s={size}:fps={rate}";

constexpr std::string_view sea =
    "nullsrc=s=640x360:r={rate}:d=1,trim=end_frame=1,format=gbrp,geq="
    "r='st(0,Y/H);clip(10+60*(1-ld(0))+50*sin(Y*Y*0.0009+2*sin(X*0.02+Y*0.05))*ld(0),0,255)':"
    "g='st(0,Y/H);clip(60+110*(1-ld(0))+60*sin(Y*Y*0.0009+2*sin(X*0.02+Y*0.05))*ld(0),0,255)':"
    "b='st(0,Y/H);clip(110+110*(1-ld(0))+55*sin(Y*Y*0.0009+2*sin(X*0.02+Y*0.05))*ld(0),0,255)',"
    "zoompan=z='1.2+0.001*on':x='iw*0.1*on/{frames}':y='ih*0.08':d={frames}:s={size}:fps={rate}";

constexpr std::string_view stars =
    "nullsrc=s=480x270:r={rate}:d=1,trim=end_frame=1,format=gbrp,geq="
    "r='st(0,random(1));if(gt(ld(0),0.993),120+135*random(4),8+18*Y/H)':"
    "g='st(0,random(1));if(gt(ld(0),0.993),110+145*random(4),10+12*Y/H)':"
    "b='st(0,random(1));if(gt(ld(0),0.991),190+65*random(4),30+50*Y/H)',gblur=sigma=0.45,"
    "zoompan=z='1+0.004*on':x='(iw-iw/zoom)/2':y='(ih-ih/zoom)/2':d={frames}:s={size}:fps={rate}";

constexpr std::string_view mandelbrot =
    "mandelbrot=s=480x270:r={rate}:start_scale=0.6:end_scale=0.02:end_pts=80:"
    "inner=convergence,scale={size}:flags=bicubic,setsar=1";
constexpr std::string_view life = "life=s=240x135:r={rate}:mold=24:ratio=0.12:death_color=#402060:"
                                  "life_color=#ffd070:mold_color=#205090:seed=7,gblur=sigma=0.8,"
                                  "scale={size}:flags=bicubic,setsar=1";
constexpr std::string_view weave = "cellauto=s=320x180:r={rate}:rule=110:full=1:random_fill_ratio=0.3:seed=4,"
                                   "format=yuv444p,gblur=sigma=0.8,colorchannelmixer="
                                   ".3:.2:.1:0:.6:.2:.2:0:.9:.4:.2,scale={size}:flags=bicubic,setsar=1";
constexpr std::string_view gradient =
    "gradients=s=240x135:r={rate}:c0=#ff7b00:c1=#7a1f5c:c2=#1b1740:c3=#ffd27a:"
    "nb_colors=4:speed=0.02:seed=3,scale={size}:flags=bicubic,setsar=1";
constexpr std::string_view carpet = "sierpinski=s=640x360:r={rate}:type=carpet:jump=20:seed=3,hue=h=40*t,"
                                    "colorize=hue=200:saturation=0.5:lightness=0.4:mix=0.6,"
                                    "scale={size}:flags=bicubic,setsar=1";
constexpr std::string_view chart = "testsrc2=s={size}:r={rate}";

std::string_view sceneTemplate(DemoScene scene) {
    switch (scene) {
    case DemoScene::sunset:
        return sunset;
    case DemoScene::hills:
        return hills;
    case DemoScene::city:
        return city;
    case DemoScene::aurora:
        return aurora;
    case DemoScene::sea:
        return sea;
    case DemoScene::stars:
        return stars;
    case DemoScene::mandelbrot:
        return mandelbrot;
    case DemoScene::life:
        return life;
    case DemoScene::weave:
        return weave;
    case DemoScene::gradient:
        return gradient;
    case DemoScene::carpet:
        return carpet;
    case DemoScene::chart:
        return chart;
    }
    return chart;
}

void replaceAll(std::string& text, std::string_view find, std::string const& replacement) {
    for (std::size_t at = text.find(find); at != std::string::npos; at = text.find(find, at)) {
        text.replace(at, find.size(), replacement);
        at += replacement.size();
    }
}

} // namespace

std::string sceneGraph(DemoPicture const& picture) {
    std::string graph(sceneTemplate(picture.scene));
    replaceAll(graph, "{size}", std::to_string(picture.width) + "x" + std::to_string(picture.height));
    replaceAll(graph, "{rate}", picture.rate);
    replaceAll(graph, "{frames}", std::to_string(picture.frames));
    return graph;
}

} // namespace tarn7d
